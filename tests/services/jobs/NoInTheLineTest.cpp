// A person says no while one request asks and the asker's next one waits for its turn, and nobody has agreed to that
// one in time either. What comes first decides what it is told; the no itself is never lost. The process of the one
// that waits is held meanwhile, so that it can't end in between.

#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <ranges>
#include <string>
#include <sys/types.h>
#include <thread>
#include <unistd.h>

#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/services/jobs/JobTableOfATest.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using Kind = RequestEnd::Kind;

const std::string kDenied = "Refused: an administrator did not agree.";

bool isStopped(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t nameEnds = line.rfind(") ");
    return nameEnds != std::string::npos && line.compare(nameEnds + 2, 1, "T") == 0;
}

class NoInTheLine : public JobTableOfATest {
  protected:
    NoInTheLine() {
        consent_.problem = deniedByAPerson();
        consent_.meanwhile = [path = decided_] {
            while (!std::filesystem::exists(path))
                std::this_thread::sleep_for(1ms);
        };
        markQuestions();
    }
    /// Starts two requests, and calls `then` once a person is asked about the first and the process of the second is
    /// held while it waits.
    void onceTheSecondIsHeld(std::function<void()> then) {
        start(kOtherUser);
        once([this] { return !contentsOf(asked_).empty(); }, [this, then = std::move(then)] { startSecond(then); });
    }
    void startSecond(const std::function<void()>& then) {
        const auto before = childrenOf(::getpid());
        second_ = start(kOtherUser);
        for (const pid_t child : childrenOf(::getpid())) {
            if (std::ranges::find(before, child) == before.end()) process_ = child;
        }
        once([this] { return std::filesystem::exists(markOfWaiting(process_)); }, [this, then] { hold(then); });
    }
    /// What it said before it waited has been read by the next look.
    void hold(const std::function<void()>& then) {
        signalOne(process_, SIGSTOP);
        once([this] { return isStopped(process_); }, then);
    }
    void decide() const { std::ofstream(decided_) << "no"; }
    void letGoOn() const { signalOne(process_, SIGCONT); }

    const std::string decided_ = folder_.path() / "decided";
    const Request* second_ = nullptr;
    pid_t process_ = -1;
};

TEST_F(NoInTheLine, IsTheAnswerOfWhoWasToldEvenWhereItIsLate) {
    onceTheSecondIsHeld([this] { decide(); });
    EXPECT_EQ(awaited().text, kDenied);
    ASSERT_NE(end_->process, process_);
    // It has been told, and can't say so.
    table_.giveUpUnagreed(*second_);
    letGoOn();
    const RequestEnd end = awaited();
    EXPECT_EQ(end.process, process_);
    EXPECT_EQ(end.kind, Kind::denied);
    EXPECT_EQ(end.text, kDenied);
    EXPECT_FALSE(end.isLate);
    EXPECT_EQ(contentsOf(asked_), "!");
}

TEST_F(NoInTheLine, GoesToTheNextOneWhereWhoWaitsWasGivenUpBefore) {
    onceTheSecondIsHeld([this] {
        table_.giveUpUnagreed(*second_);
        decide();
    });
    EXPECT_EQ(awaited().text, kDenied);
    ASSERT_NE(end_->process, process_);
    letGoOn();
    EXPECT_TRUE(awaited().isLate);
    EXPECT_EQ(end_->process, process_);
    EXPECT_EQ(endOf(kOtherUser).text, kDenied);
    EXPECT_EQ(contentsOf(asked_), "!") << "a person was asked once more";
}

}  // namespace
}  // namespace kestrav
