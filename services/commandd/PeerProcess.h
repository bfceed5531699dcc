#pragma once

#include "services/commandd/PeerIdentity.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

/// The process that is to be asked about when that peer asks for something: the one that has its socket open. Refused
/// when no process has it, or more than one, since then nobody can tell which of them asks; when it runs with other
/// rights than the socket was made with; and when it changes while it is looked at. Needs root to see all processes.
Outcome<AskingProcess> processHolding(const PeerIdentity& peer);

}  // namespace kestrav
