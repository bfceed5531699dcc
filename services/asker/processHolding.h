#pragma once

#include "base/Outcome.h"
#include "services/asker/ConsentSubject.h"
#include "services/asker/PeerIdentity.h"

namespace kestrav {

/// The process that is to be asked about when that peer asks for something: the one that has its socket open. Refused
/// when no process has it, or more than one, since then nobody can tell which of them asks; when it runs with other
/// rights than the socket was made with; when descriptors wait in a socket of its own to be received; and when it
/// changes while it is looked at. Needs root to see all processes. May wait half a second.
Outcome<AskingProcess> processHolding(const PeerIdentity& peer);

}  // namespace kestrav
