#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "cli/AccessoryChoice.h"
#include "device/DeviceRegistry.h"

namespace kestrav {

/// The registry of another object without the devices that were not chosen: whoever asks it, the engine above all,
/// finds the chosen one alone. Where a choice leaves several it passes none on, since nobody knows which is meant;
/// where nothing was chosen it passes all on, and says once which of them the engine takes.
class ChosenDevices final : public DeviceRegistry {
  public:
    /// `registry` is not owned and outlives this object. `say` takes the sentence.
    ChosenDevices(DeviceRegistry& registry, AccessoryChoice choice, std::function<void(const std::string&)> say);

    /// What the engine took the last time, its serial number whole UTF-8; absent when there was nothing to take.
    const std::optional<UsbDevice>& taken() const noexcept { return taken_; }

    /// Why there was nothing to take: one sentence, and a second one that says what to do.
    std::string whyNone() const;
    std::string remedyForNone() const;

    RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) override;

  private:
    DeviceRegistry& registry_;
    AccessoryChoice choice_;
    std::function<void(const std::string&)> say_;
    std::optional<UsbDevice> taken_;
    std::size_t meant_ = 0;  ///< how many the choice left the last time
};

}  // namespace kestrav
