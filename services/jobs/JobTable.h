#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "base/Outcome.h"
#include "services/gate/RequestLog.h"
#include "services/jobs/EventLoop.h"
#include "services/jobs/JobProcess.h"
#include "services/jobs/QuestionLine.h"
#include "services/jobs/Request.h"

namespace kestrav {

/// The requests that a service has under way, and the loop that it runs on. Each is carried out in a process of its
/// own, and only through the gate. One thread.
///
/// At most 64 requests have a place at once: 8 are root's alone, one user has 48, and a user without an account (a
/// sub-uid of somebody's container) 4. Where all are taken, somebody who waits gives way, of the user who has most.
/// Of one process's requests a person is asked about one at a time, see QuestionLine.
/// SIGTERM, SIGINT, SIGHUP and SIGQUIT tell the service to stop; SIGPIPE, SIGUSR1, SIGUSR2, SIGALRM,
/// SIGVTALRM and SIGPROF mean nothing. A service that ends on an exception waits for the requests that were begun.
class JobTable {
  public:
    static constexpr std::size_t kPlaces = 64;
    static constexpr std::size_t kPlacesOfRoot = 8;
    static constexpr std::size_t kPlacesOfAUser = 48;
    static constexpr std::size_t kPlacesWithoutAccount = 4;
    /// How long a process may take to notice that its request was given up, before it is killed.
    static constexpr std::chrono::seconds kTimeToGiveUp{2};

    /// The service that the table belongs to.
    class Service {
      public:
        virtual ~Service() = default;

        /// A signal says so; may be called again.
        virtual void stop() = 0;
        /// Turns that user's oldest peer away whose request is still arriving. False when there is none.
        virtual bool giveWay(uid_t) { return false; }
        /// The service fails: nothing more is taken while the last requests end.
        virtual void takeNothingMore() noexcept = 0;
    };

    /// Room for one request, held from its first byte to its answer. Not longer than the table.
    class Place {
      public:
        Place(Place&& other) noexcept : table_(std::exchange(other.table_, nullptr)), uid_(other.uid_) {}
        Place& operator=(Place&&) = delete;
        ~Place() {
            if (table_ != nullptr) table_->vacate(uid_);
        }

      private:
        friend class JobTable;
        Place(JobTable& table, uid_t uid) : table_(&table), uid_(uid) {}
        JobTable* table_;
        uid_t uid_;
    };

    /// Nothing is owned. `busy` is what those are told for whom there is no place. Raises std::system_error.
    JobTable(Service& service, Gate& gate, RequestLog& log, Problem busy);
    JobTable(const JobTable&) = delete;
    JobTable& operator=(const JobTable&) = delete;

    /// A place for a request of that user. Refused by the gate, or with `busy`.
    Outcome<Place> admit(uid_t uid);
    /// Has a request carried out; `request->ended()` tells what came of it, maybe at once.
    void start(Place place, std::unique_ptr<Request> request);
    /// Gives one up whose asker has gone, if it has not begun.
    void giveUp(const Request& request);
    /// Gives one up to which nobody has agreed in time: it is answered now. Where a person is being asked, the question
    /// goes on for the next request of the same asker, until it is decided, until that asker has ended, or as long as
    /// the consent has patience.
    void giveUpUnagreed(const Request& request);
    /// Lets no more requests begin: the service stops.
    void giveUpWaiting();
    /// Whether no request is being carried out. A question that outlived its request ends with the service.
    bool isEmpty() const;

    EventLoop& loop() { return loop_; }
    /// Serves until the loop is ended. False when that was because of an exception; it is logged.
    bool run();

  private:
    struct Job {
        Job(std::unique_ptr<Request> what, Gate& gate, Place where, std::uint64_t which)
            : place(std::move(where)),
              number(which),
              request(std::move(what)),
              process(*request, gate) {}

        std::optional<Place> place;  ///< none once it has given way
        std::uint64_t number;
        std::unique_ptr<Request> request;
        JobProcess process;
        std::string asked = {};   ///< known once a person is to be asked; in one harmless line
        bool isAnswered = false;  ///< and only the question goes on, or its process ends
        bool isGivenUp = false;
        bool isLate = false;    ///< nobody agreed in time
        bool isDenied = false;  ///< was told somebody's no, which is its answer
        EventLoop::Watch channel;
        EventLoop::Watch end;
        EventLoop::Watch killing;
    };

    void watch(Job& job);
    void listen(Job& job);
    static void answer(Job& job);
    static RequestEnd endOf(const Job& job);
    void hear(Job& job, const JobProcess::Message& message);
    void tell(const QuestionLine::Replies& replies);
    void giveUp(Job& job);
    void finish(pid_t pid);
    void reportDeath(const Job& ended);
    std::size_t taken(uid_t uid) const;
    bool hasPlaceFor(uid_t uid) const;
    bool makeRoomFor(uid_t uid);
    bool giveUpOldest(uid_t uid, bool ofThoseAnswered);
    std::size_t mostOf(uid_t uid);
    void vacate(uid_t uid);
    void countRefusals();
    void reportEnd(const char* reason) noexcept;
    void waitForRunning() noexcept;

    Service& service_;
    Gate& gate_;
    RequestLog& log_;
    Problem busy_;
    EventLoop loop_;
    std::vector<EventLoop::Watch> watches_;
    EventLoop::Watch summary_;
    std::optional<RequestLog::Time> summaryTime_;
    std::map<uid_t, std::size_t> taken_;  ///< places by user; nobody with none
    std::size_t takenInAll_ = 0;
    std::map<uid_t, bool> hasAccount_;  ///< as far as it was looked up
    std::uint64_t started_ = 0;
    std::map<pid_t, Job> jobs_;
    QuestionLine questions_;
    bool isStopping_ = false;
};

}  // namespace kestrav
