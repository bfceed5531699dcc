#pragma once

#include <systemd/sd-bus.h>

#include "base/Outcome.h"

namespace kestrav {

/// What polkit's answer to CheckAuthorization means. Anything but a plain yes is a refusal: an error, an answer of
/// another form, a challenge.
Outcome<void> polkitAnswer(sd_bus_message* answer);

}  // namespace kestrav
