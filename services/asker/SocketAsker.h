#pragma once

#include <sys/types.h>

#include "services/asker/Asker.h"
#include "services/asker/ConsentSubject.h"
#include "services/asker/PeerIdentity.h"

namespace kestrav {

/// Whoever holds the other end of a loopback connection. A person may be asked on their behalf.
class SocketAsker final : public Asker {
  public:
    /// `connection` is not owned; `identity` is what was found at its other end when it was accepted. `service` is the
    /// process that has accepted it: it is not looked for the other end, nor is the process that asks this object. 0
    /// where this may be the process at the other end, too.
    SocketAsker(int connection, const PeerIdentity& identity, pid_t service = 0)
        : connection_(connection),
          identity_(identity),
          service_(service) {}

    uid_t uid() const override { return identity_.uid; }
    /// The one process that has the socket open. Needs root to see all processes.
    Outcome<ConsentSubject> subject() override;
    Outcome<void> couldDoItself(const ConsentSubject& subject) override;
    bool mayBePrompted() const override { return true; }
    /// Whether the same socket is still at the other end; another one could have taken its address.
    bool stillWants() override;
    bool mayBegin() override { return stillWants(); }

  private:
    Outcome<AskingProcess> process() const;

    int connection_;
    PeerIdentity identity_;
    pid_t service_;
};

}  // namespace kestrav
