#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

#include "cli/carryOutHelper.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/FakeAuthorization.h"
#include "tests/command/fakes/FakeHelperChannel.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Operation = HelperInvocation::Operation;

class HelperCommand : public testing::Test {
  protected:
    ExitCode carryOut(const HelperInvocation& invocation) {
        const HelperParts parts{authorization_,           channel_, log_, quietLog_, [this] { return uninstalled_; },
                                [this] { return state_; }};
        return carryOutHelper(invocation, parts, {out_, err_});
    }

    FakeAuthorization authorization_;
    FakeHelperChannel channel_;
    RecordingLog log_;
    RecordingLog quietLog_;
    Outcome<void> uninstalled_;
    HelperState state_ = HelperState::running;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(HelperCommand, InstallsWithConsent) {
    EXPECT_EQ(carryOut({Operation::install, "", {}}), ExitCode::success);
    EXPECT_EQ(out_.str(), "The helper is installed.\n");
    EXPECT_EQ(authorization_.helpers.size(), 1U);
}

TEST_F(HelperCommand, SaysWhyItDidNotInstall) {
    authorization_.createStatus = -60006;
    EXPECT_EQ(carryOut({Operation::install, "", {}}), ExitCode::failure);
    EXPECT_THAT(err_.str(), HasSubstr("the request for an administrator's password was dismissed"));
}

TEST_F(HelperCommand, ShowsAnInstallersWordsWithoutTheirControlCharacters) {
    authorization_.blesses = false;
    authorization_.blessError = BlessingError("bad\x1b[2J");
    EXPECT_EQ(carryOut({Operation::install, "", {}}), ExitCode::failure);
    EXPECT_EQ(err_.str(), "bad\\x1b[2J\n");
}

TEST_F(HelperCommand, Uninstalls) {
    EXPECT_EQ(carryOut({Operation::uninstall, "", {}}), ExitCode::success);
    EXPECT_EQ(out_.str(), "The helper is uninstalled.\n");
    uninstalled_ = failed("no.");
    EXPECT_EQ(carryOut({Operation::uninstall, "", {}}), ExitCode::failure);
    EXPECT_EQ(err_.str(), "no.\n");
}

struct StateRow {
    const char* name;
    HelperState state;
    ExitCode code;
    const char* words;
};

class HelperStatus : public HelperCommand, public testing::WithParamInterface<StateRow> {};

TEST_P(HelperStatus, SaysWhetherItIsThere) {
    state_ = GetParam().state;
    EXPECT_EQ(carryOut({Operation::status, "", {}}), GetParam().code);
    EXPECT_EQ(out_.str() + err_.str(), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(Rows, HelperStatus,
                         testing::Values(StateRow{"Running", HelperState::running, ExitCode::success,
                                                  "The helper is installed and running.\n"},
                                         StateRow{"Installed", HelperState::installed, ExitCode::success,
                                                  "The helper is installed and starts when it is needed.\n"},
                                         StateRow{"Missing", HelperState::notInstalled, ExitCode::failure,
                                                  "The helper is not installed.\n"},
                                         StateRow{"Unknown", HelperState::unknown, ExitCode::failure,
                                                  "The system bus does not answer, so nobody knows.\n"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(HelperCommand, RunsAndWaitsForTheReply) {
    std::thread answering;
    channel_.onRequest = [&](FakeHelperChannel::Request& request) {
        answering = std::thread([reply = request.reply] { reply("Unmounted sdb1"); });
    };
    EXPECT_EQ(carryOut({Operation::run, "umount", {"/dev/sdbs1"}}), ExitCode::success);
    answering.join();
    EXPECT_EQ(out_.str(), "The helper has finished; its log says what came of it.\n");
    ASSERT_EQ(channel_.connections.size(), 1U);
    EXPECT_EQ(channel_.connections[0]->requests[0].cmd, "umount");
    EXPECT_THAT(channel_.connections[0]->requests[0].arguments, ElementsAre("/dev/sdbs1"));
}

TEST_F(HelperCommand, KeepsTheEndOfTheConnectionOffTheTerminalAfterAGoodRun) {
    channel_.onRequest = [](FakeHelperChannel::Request& request) { request.reply("Unmounted sdb1"); };
    EXPECT_EQ(carryOut({Operation::run, "umount", {"/dev/sdbs1"}}), ExitCode::success);
    EXPECT_THAT(log_.entries(), IsEmpty());
    EXPECT_THAT(quietLog_.entries(), ElementsAre("Connection Invalidated"));
}

TEST_F(HelperCommand, FailsWhenTheRequestFails) {
    std::thread failing;
    channel_.onRequest = [&](FakeHelperChannel::Request& request) {
        failing = std::thread([fail = request.fail] { fail("Refused: an administrator did not agree."); });
    };
    EXPECT_EQ(carryOut({Operation::run, "umount", {"/dev/sdbs1"}}), ExitCode::failure);
    failing.join();
    EXPECT_EQ(out_.str(), "");
    EXPECT_THAT(log_.entries(),
                ElementsAre("remote proxy error: Refused: an administrator did not agree.", "Connection Invalidated"));
}

}  // namespace
}  // namespace kestrav
