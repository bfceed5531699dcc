#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrav {

/// A USB device as the system's registry knows it.
struct UsbDevice {
    std::uint32_t id = 0;             ///< a handle that tells attached devices apart
    std::string name;                 ///< as the registry has it; empty when it can't be had
    std::optional<std::string> disk;  ///< the name after "/dev/" of the whole disk made for the device
};

/// What a registry says to a question. It was out of reach if `status` is above 0 or there is no list.
struct RegistryAnswer {
    std::int32_t status = 0;                        ///< the system's number for what went wrong
    std::optional<std::vector<UsbDevice>> devices;  ///< in the registry's own order
};

/// The system's list of attached devices, asked afresh each time.
class DeviceRegistry {
  public:
    virtual ~DeviceRegistry() = default;

    /// The USB devices with these identifiers. Values that no device can have, such as negative ones, match none.
    /// Stops the process when the question itself can't be put together.
    virtual RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) = 0;
};

}  // namespace kestrav
