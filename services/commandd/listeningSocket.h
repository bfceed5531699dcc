#pragma once

#include "base/Outcome.h"
#include "base/UniqueFd.h"

namespace kestrav {

/// The socket that requests arrive on, ready for accept(2) without waiting: the one that systemd handed over, else one
/// of our own at 127.0.0.1:9090. A handed socket must listen for TCP on a loopback address; everything but loopback
/// would open the service to the network.
Outcome<UniqueFd> listeningSocket();

}  // namespace kestrav
