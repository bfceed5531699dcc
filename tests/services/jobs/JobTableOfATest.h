#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

#include "services/jobs/JobTable.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/gate/GateWithoutDisks.h"

namespace kestrav {

/// A service with one request, which ends with it.
class JobTableOfATest : public GateWithoutDisks, public JobTable::Service {
  protected:
    class OneRequest final : public Request {
      public:
        OneRequest(JobTableOfATest& test, uid_t uid) : test_(test), asker_(uid) {
            asker_.looks = [&test] { std::ofstream(test.markOfWaiting(::getpid())) << '!'; };
        }
        Asker& asker() override { return asker_; }
        Outcome<CommandLine> read() override { return CommandLine{"umount", {"/dev/sdzzs1"}}; }
        void leaveService() override { test_.inRequest_ = true; }
        bool isStillWanted() const override { return test_.inRequest_ || test_.isWanted_; }
        void ended(const RequestEnd& end) override {
            test_.end_ = end;
            test_.endedRequest_ = this;
            test_.table_.loop().end();
        }

      private:
        JobTableOfATest& test_;
        FakeAsker asker_;
    };

    void stop() override { table_.giveUpWaiting(); }
    void takeNothingMore() noexcept override { tookNothingMore_ = true; }
    bool giveWay(uid_t uid) override {
        const auto oldest =
            std::find_if(arriving_.begin(), arriving_.end(), [uid](const auto& peer) { return peer.first == uid; });
        if (oldest == arriving_.end()) return false;
        arriving_.erase(oldest);
        return true;
    }
    /// Takes a place for a request that is still arriving.
    std::string take(uid_t uid) {
        auto place = table_.admit(uid);
        if (!place) return place.problem().sentence;
        arriving_.emplace_back(uid, std::move(place.value()));
        return "taken";
    }
    std::size_t arriving(uid_t uid) const {
        return static_cast<std::size_t>(
            std::count_if(arriving_.begin(), arriving_.end(), [uid](const auto& peer) { return peer.first == uid; }));
    }
    void takeAllOf(uid_t first, uid_t second) {
        for (int i = 0; i < 48; ++i)
            ASSERT_EQ(take(first), "taken");
        for (int i = 0; i < 8; ++i)
            ASSERT_EQ(take(second), "taken");
    }

    /// Calls `handler` once consent is being asked for.
    void onceAsked(std::function<void()> handler) {
        markQuestions();
        once([this] { return !contentsOf(asked_).empty(); }, std::move(handler));
    }
    /// From now on each question of a person leaves a "!" in the file `asked_`.
    void markQuestions() {
        consent_.meanwhile = [path = asked_, then = consent_.meanwhile] {
            std::ofstream(path, std::ios::app) << '!';
            then();
        };
    }
    /// Calls `handler` once the condition holds, which the loop looks at again and again.
    void once(std::function<bool()> holds, std::function<void()> handler) {
        looking_ = table_.loop().after(std::chrono::milliseconds(10),
                                       [this, holds = std::move(holds), handler = std::move(handler)] {
                                           holds() ? handler() : once(holds, handler);
                                       });
    }
    /// There as soon as the request's process has looked whether its answer is still wanted, as it does while it waits.
    std::filesystem::path markOfWaiting(pid_t process) const {
        return folder_.path() / ("waiting-" + std::to_string(process));
    }
    const Request* start(uid_t uid) {
        auto request = std::make_unique<OneRequest>(*this, uid);
        const Request* const started = request.get();
        table_.start(std::move(table_.admit(uid).value()), std::move(request));
        return started;
    }
    RequestEnd endOf(uid_t uid) {
        start(uid);
        return awaited();
    }
    RequestEnd awaited() {
        EXPECT_TRUE(table_.run());
        return end_.value();
    }

    const TemporaryFolder folder_;
    const std::string asked_ = folder_.path() / "asked";
    JobTable table_{*this, gate_, requests_, refused("busy.")};
    std::list<std::pair<uid_t, JobTable::Place>> arriving_;
    std::optional<RequestEnd> end_;
    const Request* endedRequest_ = nullptr;  ///< for its identity only: it is gone
    EventLoop::Watch looking_;
    bool inRequest_ = false;
    bool isWanted_ = true;  ///< as far as the service sees; in the request's process it always is
    bool tookNothingMore_ = false;
};

}  // namespace kestrav
