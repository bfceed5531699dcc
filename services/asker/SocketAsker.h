#pragma once

#include "services/asker/Asker.h"
#include "services/asker/PeerIdentity.h"

namespace kestrav {

/// Whoever holds the other end of a loopback connection. A person may be asked on their behalf.
class SocketAsker final : public Asker {
  public:
    /// `connection` is not owned; `identity` is what was found at its other end when it was accepted.
    SocketAsker(int connection, const PeerIdentity& identity) : connection_(connection), identity_(identity) {}

    uid_t uid() const override { return identity_.uid; }
    /// The one process that has the socket open. Needs root to see all processes.
    Outcome<ConsentSubject> subject() override;
    Outcome<void> couldDoItself(const ConsentSubject& subject) override;
    bool mayBePrompted() const override { return true; }
    /// Whether the same socket is still at the other end; another one could have taken its address.
    bool stillWants() override;
    bool mayBegin() override { return stillWants(); }

  private:
    int connection_;
    PeerIdentity identity_;
};

}  // namespace kestrav
