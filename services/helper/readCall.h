#pragma once

#include <cstddef>
#include <optional>
#include <systemd/sd-bus.h>

#include "base/Outcome.h"
#include "services/gate/CommandLine.h"

namespace kestrav {

/// What a call of runWithCmd says.
struct CallText {
    CommandLine asked;               ///< its beginning, where there is trouble
    std::size_t size = 0;            ///< bytes that `asked` keeps
    std::optional<Problem> trouble;  ///< why it is more than a request may be
    bool isWhole = true;             ///< false where the message can't be read
};

/// Reads "sas", and no further than a request may be long: the message may have 30 MiB, and as texts its empty ones
/// take a multiple of that.
CallText readCall(sd_bus_message* message);

}  // namespace kestrav
