#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "base/UniqueFd.h"
#include "command/HelperChannel.h"

namespace kestrav {

/// One request on its way to the helper; ends with one call of either `reply` or `fail`.
struct HelperCall {
    std::string cmd;
    std::vector<std::string> arguments;
    JobProtocol::Reply reply;
    HelperConnection::ErrorHandler fail;
};

/// Hands requests to the connection's thread. Any thread may put; one thread takes.
class HelperCallQueue {
  public:
    HelperCallQueue();

    /// False, with the request dropped, once the queue has been closed.
    bool put(HelperCall call);
    void close();

    struct Taken {
        std::vector<HelperCall> calls;
        bool closed = false;
    };
    Taken take();

    /// Readable when there is something to take.
    int wakeUpFd() const noexcept { return wakeUp_.get(); }

  private:
    void wakeUp();

    UniqueFd wakeUp_;
    std::mutex mutex_;
    Taken waiting_;
};

}  // namespace kestrav
