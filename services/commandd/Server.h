#pragma once

#include <chrono>
#include <list>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/UniqueFd.h"
#include "services/commandd/PeerIdentity.h"
#include "services/commandd/RequestScan.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

class CallerJudge;
class RequestRunner;
class RequestLog;

/// Takes requests from the listening socket and has each one carried out in a child process of its own, so that a
/// request that takes long, or goes wrong, holds nobody else up. One thread; never waits for a peer.
///
/// Who connects is looked up first, and turned away in words where the judge says so. A request has 64 KiB and five
/// seconds to arrive. At most 64 peers are served at once, 48 of one user who is not root; the next one is told to come
/// back.
class Server {
  public:
    /// `listener` doesn't wait in accept(2). The rest isn't owned and outlives this object.
    Server(UniqueFd listener, const CallerJudge& judge, RequestRunner& runner, RequestLog& log);

    /// Serves until SIGTERM, SIGINT, SIGHUP or SIGQUIT; then takes nothing more, lets requests that were begun end and
    /// be answered, and returns true. False when the system doesn't give what it needs. Blocks those signals and
    /// SIGCHLD in the process.
    bool run();

  private:
    using Clock = std::chrono::steady_clock;

    /// A connection whose request is still arriving.
    struct Peer {
        UniqueFd connection;
        PeerIdentity identity;
        Clock::time_point deadline;
        RequestScan scan;
        std::string received;
    };
    /// A connection whose request is being carried out.
    struct Running {
        UniqueFd connection;
        uid_t uid;
    };
    /// A connection that was answered and whose peer may still be sending.
    struct Leaving {
        UniqueFd connection;
        Clock::time_point deadline;
    };

    bool openSignals();
    bool serve();
    void reportEnd(const char* reason) noexcept;
    void waitForRunning() noexcept;
    std::vector<pollfd> watched() const;
    int millisecondsToNextDeadline() const;
    void handle(const std::vector<pollfd>& ready);
    void handleSignals();
    void acceptAll();
    bool acceptOne();
    void admit(UniqueFd connection);
    bool receive(Peer& peer);
    void dropLate();
    void begin(Peer& peer);
    [[noreturn]] void runInChild(Peer& peer, pid_t parent);
    void collectChildren();
    void refuse(UniqueFd connection, uid_t uid, const Problem& problem);
    void answerLast(UniqueFd connection, std::string_view answer);
    void stop();
    std::size_t served() const { return peers_.size() + running_.size(); }
    bool isFull(uid_t uid) const;

    UniqueFd listener_;
    UniqueFd signals_;
    const CallerJudge& judge_;
    RequestRunner& runner_;
    RequestLog& log_;
    std::list<Peer> peers_;
    std::list<Leaving> leaving_;
    std::map<pid_t, Running> running_;
    std::optional<Clock::time_point> acceptAgain_;  ///< set while the system has no descriptors left
    bool stopping_ = false;
};

}  // namespace kestrav
