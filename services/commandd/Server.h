#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "base/UniqueFd.h"
#include "services/jobs/JobTable.h"

namespace kestrav {

/// Takes requests from the listening socket, hands them to the job table and sends the answers. One thread; never waits
/// for a peer.
///
/// Who connects is looked up first, and turned away in words where the table has no place for them. A request has
/// 64 KiB and five seconds to arrive, and then 50 seconds to begin: the updater has an answer before it gives up.
class Server final : private JobTable::Service {
  public:
    struct Patience {
        std::chrono::milliseconds toArrive{5'000};
        std::chrono::milliseconds toAgree{50'000};          ///< for whoever is asked; the updater gives up after 60 s
        std::chrono::milliseconds toLeave{1'000};           ///< for a peer that still sends after its answer
        std::chrono::milliseconds withoutDescriptors{100};  ///< until the next attempt to take somebody in
    };

    /// `listener` doesn't wait in accept(2). The rest isn't owned and outlives this object. Raises std::system_error.
    Server(UniqueFd listener, Gate& gate, RequestLog& log, Patience patience);
    Server(UniqueFd listener, Gate& gate, RequestLog& log) : Server(std::move(listener), gate, log, Patience()) {}
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Serves until a signal ends it; then takes nothing more, lets requests that were begun end and be answered, and
    /// returns true. False when the system doesn't give what it needs.
    bool run();

  private:
    class Peer;
    /// A connection that was answered and whose peer may still be sending.
    struct Leaving {
        UniqueFd connection;
        EventLoop::Watch readable;
        EventLoop::Watch deadline;
    };

    void stop() override;
    bool giveWay(uid_t uid) override;
    void takeNothingMore() noexcept override;
    void listen();
    void acceptAll();
    bool acceptOne();
    void welcome(UniqueFd connection);
    void receive(Peer& peer);
    void turnAway(Peer& peer, const Problem& problem);
    void answer(Peer& peer, const RequestEnd& end);
    void refuse(UniqueFd connection, uid_t uid, const std::string& answer, const std::string& asked = {});
    void answerLast(UniqueFd connection, std::string_view answer);
    void endWhenDone();

    UniqueFd listener_;
    RequestLog& log_;
    Patience patience_;
    bool isStopping_ = false;
    std::uint64_t arrivals_ = 0;  ///< how many have connected
    std::set<Peer*> everybody_;   ///< who has not been answered
    JobTable jobs_;
    EventLoop::Watch accepting_;                  ///< of the listener, or until the system has descriptors again
    std::map<int, std::unique_ptr<Peer>> peers_;  ///< whose request is still arriving, by connection
    std::list<Leaving> leaving_;
};

}  // namespace kestrav
