#pragma once

#include <span>
#include <sys/types.h>

#include "base/Outcome.h"
#include "services/asker/ConsentSubject.h"
#include "services/asker/PeerIdentity.h"

namespace kestrav {

/// The process that is to be asked about when that peer asks for something: the one that has its socket open. Refused
/// when no process has it, or more than one, since then nobody can tell which of them asks; when it runs with other
/// rights than the socket was made with; when descriptors wait in a socket of its own to be received; and when it
/// changes while it is looked at. Needs root to see all processes. May wait half a second.
///
/// `ours` are processes that are not looked through: of the service itself, which take descriptors from nobody, and
/// have more of them than most.
Outcome<AskingProcess> processHolding(const PeerIdentity& peer, std::span<const pid_t> ours = {});

}  // namespace kestrav
