#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>

#include "app/UpdateEnding.h"

namespace kestrav {

/// How updates end, each way once.
inline constexpr std::array kEveryEnding{
    UpdateEnding::firmwareArrived,
    UpdateEnding::firmwareArrivedInIcon,
    UpdateEnding::iconArrived,
    UpdateEnding::boardSaysArrived,
    UpdateEnding::registryOutOfReach,
    UpdateEnding::imageEmpty,
    UpdateEnding::noAccessory,
    UpdateEnding::notHandedOver,
    UpdateEnding::cannotConnect,
    UpdateEnding::noDescriptorLeft,
    UpdateEnding::notRunning,
    UpdateEnding::notAcceptedInTime,
    UpdateEnding::notSent,
    UpdateEnding::accessoryUnplugged,
    UpdateEnding::noDiskYet,
    UpdateEnding::refused,
    UpdateEnding::unpluggedInTheMiddle,
    UpdateEnding::failed,
    UpdateEnding::imageChanged,
    UpdateEnding::boardSaysRefused,
    UpdateEnding::boardSaysFailed,
    UpdateEnding::notReadBack,
    UpdateEnding::otherWrite,
    UpdateEnding::halfAnAnswer,
    UpdateEnding::strangersAnswer,
    UpdateEnding::noAnswerInTime,
    UpdateEnding::serviceGone,
    UpdateEnding::serviceDied,
};
static_assert(kEveryEnding.size() == static_cast<std::size_t>(UpdateEnding::serviceDied) + 1);
static_assert(std::ranges::is_sorted(kEveryEnding, std::ranges::less_equal{}) &&
              kEveryEnding.front() == UpdateEnding{});

}  // namespace kestrav
