#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/AccessoryChoice.h"
#include "cli/Backends.h"
#include "device/DeviceRegistry.h"

namespace kestrav {

/// The accessories that are meant, each of them told once, when it is attached and its disk can be used. One that is
/// plugged in again is another one. For one thread.
class AccessoryArrivals {
  public:
    /// How long to pause between two looks: nobody notices it, and it takes little of a processor.
    static constexpr std::chrono::milliseconds kPause{250};
    /// Which are told.
    enum class When {
        attached,  ///< as soon as they are attached
        ready,     ///< when their disk has its node; one that has none after some seconds is told all the same, so that
                   ///< somebody says what is wrong with it
    };

    /// `backends` is not owned and outlives this object.
    AccessoryArrivals(const Backends& backends, AccessoryChoice choice);

    /// Those that have come since the last time, in the order of their ports. Absent when the device registry is out of
    /// reach.
    std::optional<std::vector<UsbDevice>> take(When when);

  private:
    using Clock = std::chrono::steady_clock;
    bool isReady(const UsbDevice& device);

    const Backends& backends_;
    AccessoryChoice choice_;
    std::set<std::uint32_t> known_;
    std::map<std::uint32_t, Clock::time_point> seenFirst_;
};

}  // namespace kestrav
