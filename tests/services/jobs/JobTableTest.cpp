#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tests/TemporaryFolder.h"
#include "tests/services/jobs/JobTableOfATest.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;
using Kind = RequestEnd::Kind;

// More users of every Debian, and one that none has.
constexpr uid_t kThirdUser = 2;
constexpr uid_t kFourthUser = 3;
constexpr uid_t kNobodyInParticular = 3'999'999'999;

TEST_F(JobTableOfATest, HasARequestAnsweredByTheGate) {
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::answered);
    EXPECT_TRUE(end.begun);
    EXPECT_THAT(end.text, StartsWith("Refused: "));
    EXPECT_FALSE(inRequest_) << "not in a process of its own";
    EXPECT_TRUE(table_.isEmpty());
}

TEST_F(JobTableOfATest, TellsWhatWasDenied) {
    consent_.problem = refused("no.");
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::denied);
    EXPECT_FALSE(end.begun);
    EXPECT_EQ(end.text, "Refused: no.");
}

TEST_F(JobTableOfATest, TellsWhenTheProcessDied) {
    consent_.meanwhile = [] { ::raise(SIGKILL); };
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::died);
    EXPECT_THAT(log_.entries(),
                ElementsAre("process " + std::to_string(end.process) + " was ended by signal 9 (Killed)"));
}

TEST_F(JobTableOfATest, SaysWhatNobodyForesaw) {
    consent_.meanwhile = [] { throw std::runtime_error("out of\nluck"); };
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::died);
    EXPECT_THAT(log_.entries(),
                ElementsAre("process " + std::to_string(end.process) + " ended with status 1: out of\\x0aluck"));
}

TEST_F(JobTableOfATest, SaysThatNobodyKnowsWhatItWas) {
    consent_.meanwhile = [] { throw 5; };
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::died);
    EXPECT_THAT(log_.entries(),
                ElementsAre("process " + std::to_string(end.process) + " ended with status 1: an unknown exception"));
}

TEST_F(JobTableOfATest, LetsNoExceptionOutOfTheProcess) {
    const TemporaryFolder folder;
    const pid_t service = ::getpid();
    consent_.meanwhile = [] { throw std::runtime_error("out of luck"); };
    start(kOtherUser);
    table_.run();
    if (::getpid() != service) {
        folder.file("escaped", "");
        ::_exit(1);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "escaped")) << "it ran on into the service's own code";
    EXPECT_EQ(end_.value().kind, Kind::died);
}

TEST_F(JobTableOfATest, GivesAQuestionUpThatIsNoLongerWanted) {
    consent_.waits = true;
    const Request* const request = start(kOtherUser);
    const auto gone = table_.loop().after(50ms, [&] { table_.giveUp(*request); });
    const RequestEnd end = awaited();
    EXPECT_EQ(end.kind, Kind::denied);
    EXPECT_EQ(end.text, "Refused: given up.");
}

TEST_F(JobTableOfATest, BeginsNothingThatNobodyWantsAtTheLastMoment) {
    isWanted_ = false;
    const RequestEnd end = endOf(kOtherUser);
    EXPECT_EQ(end.kind, Kind::notBegun);
    EXPECT_FALSE(end.begun);
}

TEST_F(JobTableOfATest, HandsANoToOneFurtherRequestOfTheSameAsker) {
    markQuestions();
    consent_.problem = deniedByAPerson();
    for (int i = 0; i < 2; ++i) {
        const RequestEnd end = endOf(kOtherUser);
        EXPECT_EQ(end.kind, Kind::denied);
        EXPECT_EQ(end.text, "Refused: an administrator did not agree.");
        EXPECT_EQ(end.asked, "umount /dev/sdzzs1");
        EXPECT_EQ(contentsOf(asked_), "!");
    }
    endOf(kOtherUser);
    EXPECT_EQ(contentsOf(asked_), "!!");
}

TEST_F(JobTableOfATest, HandsOnNoTroubleWithAsking) {
    markQuestions();
    consent_.problem = refused("polkit is away.");
    endOf(kOtherUser);
    EXPECT_EQ(endOf(kOtherUser).text, "Refused: polkit is away.");
    EXPECT_EQ(contentsOf(asked_), "!!");
}

TEST_F(JobTableOfATest, AnswersAtOnceWhatNobodyAgreedToAndKeepsAsking) {
    consent_.waits = true;
    const Request* request = nullptr;
    onceAsked([&] { table_.giveUpUnagreed(*request); });
    request = start(kOtherUser);
    const RequestEnd end = awaited();
    EXPECT_EQ(end.kind, Kind::notBegun);
    EXPECT_EQ(end.asked, "umount /dev/sdzzs1");
    EXPECT_EQ(::kill(end.process, 0), 0) << "the question is over";
    EXPECT_TRUE(table_.isEmpty()) << "the service would wait for it";
    // The next request of the same asker asks nobody while that question is open.
    end_.reset();
    const Request* const next = start(kOtherUser);
    const auto gone = table_.loop().after(300ms, [&] { table_.giveUp(*next); });
    EXPECT_EQ(awaited().text, "Refused: the request was given up before consent was given.");
}

TEST_F(JobTableOfATest, BeginsNothingForAQuestionThatOutlivedItsRequest) {
    const TemporaryFolder folder;
    const std::string agreed = folder.path() / "agreed";
    consent_.meanwhile = [&agreed] {
        while (!std::filesystem::exists(agreed))
            std::this_thread::sleep_for(1ms);
    };
    const Request* request = nullptr;
    onceAsked([&] { table_.giveUpUnagreed(*request); });
    request = start(kOtherUser);
    EXPECT_EQ(awaited().kind, Kind::notBegun);
    std::ofstream(agreed) << "yes";
    // Its turn comes once the first question is over.
    const pid_t first = end_->process;
    const RequestEnd next = endOf(kOtherUser);
    EXPECT_EQ(next.kind, Kind::answered);
    EXPECT_NE(next.process, first);
    EXPECT_EQ(contentsOf(asked_), "!!");
}

TEST_F(JobTableOfATest, LetsAQuestionThatOutlivedItsRequestGiveWayToTheSameUser) {
    consent_.waits = true;
    const Request* request = nullptr;
    onceAsked([&] { table_.giveUpUnagreed(*request); });
    request = start(kOtherUser);
    awaited();
    for (int i = 0; i < 48; ++i)
        EXPECT_EQ(take(kOtherUser), "taken");
    EXPECT_EQ(take(kOtherUser), "busy.");
}

TEST_F(JobTableOfATest, KillsAProcessThatDoesNotNotice) {
    consent_.meanwhile = [] { ::pause(); };
    const Request* request = nullptr;
    onceAsked([&] { table_.giveUp(*request); });
    request = start(kOtherUser);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(awaited().kind, Kind::died);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 30s);
    EXPECT_TRUE(log_.entries().empty()) << "who was told to end has not died of something";
}

TEST_F(JobTableOfATest, BeginsNothingOnceASignalSaysStop) {
    consent_.meanwhile = [] {
        // To the service's process; then its own question takes until that has had time to act.
        ::kill(::getppid(), SIGTERM);
    };
    consent_.waits = true;
    EXPECT_EQ(endOf(kOtherUser).text, "Refused: given up.");
    EXPECT_FALSE(end_->begun);
}

TEST_F(JobTableOfATest, BeginsNothingThatComesAfterThat) {
    table_.giveUpWaiting();
    EXPECT_EQ(endOf(0).kind, Kind::notBegun);
    EXPECT_TRUE(log_.entries().empty());
}

TEST_F(JobTableOfATest, AsksNobodyToTheEndForWhatComesAfterThat) {
    consent_.waits = true;
    table_.giveUpWaiting();
    const Request* const request = start(kOtherUser);
    const auto never = table_.loop().after(60s, [&] {
        ADD_FAILURE() << "it waits for consent";
        table_.giveUp(*request);
    });
    EXPECT_FALSE(awaited().begun);
}

TEST_F(JobTableOfATest, WaitsForARequestThatWasBegunWhenItFails) {
    start(0);
    bool failed = false;
    const auto watch = table_.loop().afterEverything([&] {
        if (std::exchange(failed, true)) return;
        throw std::runtime_error("out of luck");
    });
    EXPECT_FALSE(table_.run());
    EXPECT_TRUE(tookNothingMore_);
    EXPECT_TRUE(end_) << "nobody answered";
    EXPECT_EQ(log_.entries().back(), "ending when the requests that were begun have ended: out of luck");
}

TEST_F(JobTableOfATest, KeepsPlacesForOthersBesideOneUser) {
    std::list<JobTable::Place> places;
    const auto take = [&](uid_t uid) {
        auto place = table_.admit(uid);
        if (!place) return place.problem().sentence;
        places.push_back(std::move(place.value()));
        return std::string("taken");
    };
    for (std::size_t i = 0; i < 48; ++i)
        ASSERT_EQ(take(kOtherUser), "taken");
    EXPECT_EQ(take(kOtherUser), "busy.");
    for (std::size_t i = 0; i < 16; ++i)
        ASSERT_EQ(take(0), "taken");
    EXPECT_EQ(take(0), "busy.");
    EXPECT_EQ(take(2), "busy.");
    places.pop_front();
    EXPECT_EQ(take(kOtherUser), "taken");
    places.clear();
    for (std::size_t i = 0; i < 64; ++i)
        ASSERT_EQ(take(0), "taken") << "one user who is root may have them all";
    EXPECT_EQ(take(0), "busy.");
}

TEST_F(JobTableOfATest, KeepsPlacesForRootBesideTwoUsers) {
    ASSERT_NO_FATAL_FAILURE(takeAllOf(kOtherUser, kThirdUser));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(take(0), "taken");
    EXPECT_EQ(arriving(kOtherUser) + arriving(kThirdUser), 56U) << "somebody gave way needlessly";
}

TEST_F(JobTableOfATest, LetsTheOldestOfWhoeverHasMostGiveWay) {
    ASSERT_NO_FATAL_FAILURE(takeAllOf(kOtherUser, kThirdUser));
    EXPECT_EQ(take(kFourthUser), "taken");
    EXPECT_EQ(arriving(kOtherUser), 47U);
    EXPECT_EQ(arriving(kThirdUser), 8U);
    EXPECT_EQ(take(kThirdUser), "taken");
    EXPECT_EQ(take(kOtherUser), "busy.") << "for the sake of those who have less";
}

TEST_F(JobTableOfATest, LetsNobodyGiveWayToWhoHadMostThen) {
    for (int i = 0; i < 28; ++i)
        ASSERT_EQ(take(kOtherUser), "taken");
    for (int i = 0; i < 27; ++i)
        ASSERT_EQ(take(kThirdUser), "taken");
    ASSERT_EQ(take(kFourthUser), "taken");
    EXPECT_EQ(take(kThirdUser), "busy.");
    EXPECT_EQ(arriving(kOtherUser), 28U);
}

TEST_F(JobTableOfATest, LetsTheOldestRequestThatWaitsForConsentGiveWay) {
    consent_.waits = true;
    const Request* const oldest = start(kOtherUser);
    start(kOtherUser);
    for (int i = 0; i < 46; ++i)
        ASSERT_EQ(take(kOtherUser), "taken");
    for (auto& peer : arriving_)
        peer.first = kNobodyInParticular;  // so that none of theirs is found to be still arriving
    for (int i = 0; i < 8; ++i)
        ASSERT_EQ(take(kThirdUser), "taken");
    EXPECT_EQ(take(kFourthUser), "taken");
    EXPECT_EQ(awaited().kind, Kind::denied);
    EXPECT_EQ(endedRequest_, oldest);
}

TEST_F(JobTableOfATest, GivesAUserWithoutAnAccountFewPlaces) {
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(take(kNobodyInParticular), "taken");
    EXPECT_EQ(take(kNobodyInParticular), "busy.");
    EXPECT_EQ(take(kOtherUser), "taken");
}

TEST_F(JobTableOfATest, AdmitsNobodyWhomTheGateTurnsAway) {
    consent_.turnsEverybody = refused("not here.");
    const auto place = table_.admit(kOtherUser);
    ASSERT_FALSE(place);
    EXPECT_EQ(place.problem().sentence, "not here.");
    EXPECT_TRUE(table_.admit(0));
}

}  // namespace
}  // namespace kestrav
