#pragma once

#include <string>
#include <string_view>

#include "services/commandd/PeerIdentity.h"

namespace kestrav {

class Gate;
class SystemLog;

/// Carries one complete request out and answers it. Runs in the child process that was made for it.
class RequestRunner {
  public:
    /// Nothing is owned.
    RequestRunner(Gate& gate, SystemLog& log) : gate_(gate), log_(log) {}

    /// Reads the request, makes sure that the one who asks is still there, has it done and sends the reply. Nothing is
    /// begun for a peer that has gone.
    void run(int connection, const PeerIdentity& peer, std::string_view request);

  private:
    Gate& gate_;
    SystemLog& log_;
};

}  // namespace kestrav
