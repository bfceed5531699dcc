#pragma once

#include "device/DeviceRegistry.h"

namespace kestrav {

/// The registry of another object, with a look at whether it could be reached: the engine takes one that is out of
/// reach for one without an accessory, and what has to be done about it is not the same.
class WatchedRegistry final : public DeviceRegistry {
  public:
    /// `registry` is not owned and outlives this object.
    explicit WatchedRegistry(DeviceRegistry& registry) : registry_(registry) {}

    /// The last time; true before the first.
    bool wasReached() const noexcept { return reached_; }

    RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) override {
        RegistryAnswer answer = registry_.usbDevices(vendor, product);
        reached_ = answer.status <= 0 && answer.devices.has_value();
        return answer;
    }

  private:
    DeviceRegistry& registry_;
    bool reached_ = true;
};

}  // namespace kestrav
