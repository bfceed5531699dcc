#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "services/commandd/PeerIdentity.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

class Consent;
class Gate;
class RequestLog;

/// Carries one complete request out and answers it. Runs in the child process that was made for it.
class RequestRunner {
  public:
    /// Nothing is owned.
    RequestRunner(Consent& consent, Gate& gate, RequestLog& log) : consent_(consent), gate_(gate), log_(log) {}

    /// Reads the request, obtains consent unless root or the service's own user asks, makes sure that the one who asks
    /// is still there, has it done and sends the reply. Nothing is begun for a peer that has gone, and a question for
    /// consent is given up when the peer leaves or SIGTERM or SIGINT is pending.
    void run(int connection, const PeerIdentity& peer, std::string_view request);

  private:
    std::optional<Problem> whyNot(int connection, const PeerIdentity& peer);

    Consent& consent_;
    Gate& gate_;
    RequestLog& log_;
};

}  // namespace kestrav
