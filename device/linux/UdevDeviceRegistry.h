#pragma once

#include "device/DeviceRegistry.h"

namespace kestrav {

/// The devices that the kernel shows in sysfs, by way of libudev. Nothing is kept between two questions.
///
/// A device's `id` is its bus number times 65536 plus its number on that bus: both are below 65536, and 0 is no
/// device. Its name is what it calls its product, else its port. Its disk is the first one below it. The order is
/// libudev's: by path in sysfs, hubs and ports in text order.
/// Its port is the kernel's name for the place where it is plugged in. A device that goes while it is looked at is left
/// out, and so is one in whose place another came.
/// Without sysfs, or when libudev can't start, the registry is out of reach with status 5.
class UdevDeviceRegistry final : public DeviceRegistry {
  public:
    RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) override;
};

}  // namespace kestrav
