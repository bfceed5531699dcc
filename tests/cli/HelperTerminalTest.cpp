#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "tests/places.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/sandbox/Terminal.h"
#include "tests/sandbox/runProgram.h"
#include "tests/sandbox/standInFor.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr uid_t kAdmin = 4711;
constexpr const char* kProgram = "/usr/local/libexec/com.corvatel.KestravHelper";

/// kestravctl in a terminal, with the real polkit, installer and helper.
class HelperInATerminal : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        fs::create_directory("/usr/libexec/kestrav");
        fs::copy_file(places::ofProgram("kestrav-bless"), "/usr/libexec/kestrav/kestrav-bless");
        fs::copy_file(places::ofProgram("kestrav-helper"), "/usr/libexec/kestrav/kestrav-helper");
        // Anybody can reach it here, wherever the build stands.
        fs::copy_file(places::ofProgram("kestravctl"), kestravctl_);
        SystemDaemons::addActions("/usr/libexec/kestrav/kestrav-bless");
        daemons_.start();
    }

    Terminal inTerminal(std::vector<std::string> words) const {
        words.insert(words.begin(), {kestravctl_, "helper"});
        return {words, kAdmin};
    }

    const std::string kestravctl_ = "/usr/libexec/kestrav/kestravctl";
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
};

TEST_F(HelperInATerminal, IsInstalledAfterThePassword) {
    Terminal terminal = inTerminal({"install"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    EXPECT_FALSE(fs::exists(kProgram));
    terminal.type("secret\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_THAT(terminal.shown(), HasSubstr("The helper is installed."));
    EXPECT_TRUE(fs::exists(kProgram));
}

TEST_F(HelperInATerminal, WaitsForAnAgentThatIsSlow) {
    const fs::path agent = "/usr/bin/pkttyagent";
    const fs::path real = "/usr/libexec/kestrav/pkttyagent";
    fs::copy_file(agent, real);
    // Longer than a busy computer's agent needs.
    ASSERT_TRUE(standInFor(agent, "sleep 8\nexec " + real.string() + " \"$@\"\n"));
    Terminal terminal = inTerminal({"install"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    terminal.type("secret\n");
    EXPECT_EQ(terminal.wait(), 0) << terminal.shown();
    EXPECT_TRUE(fs::exists(kProgram));
}

TEST_F(HelperInATerminal, IsNotInstalledAfterAWrongPassword) {
    Terminal terminal = inTerminal({"install"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    terminal.type("wrong\n");
    EXPECT_EQ(terminal.wait(), 1);
    EXPECT_THAT(terminal.shown(), HasSubstr("an administrator's password was not given or was wrong"));
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(HelperInATerminal, RunsACommandAfterThePassword) {
    ASSERT_EQ(runProgram({"/usr/libexec/kestrav/kestrav-bless", "install"}).exitStatus, 0);
    Terminal terminal = inTerminal({"run", "umount", "/dev/sdzzs1"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    EXPECT_THAT(terminal.shown(), HasSubstr("unmount, read or write the disk of your Kestrav accessory"));
    terminal.type("secret\n");
    EXPECT_EQ(terminal.wait(), 0) << terminal.shown();
    EXPECT_THAT(terminal.shown(), HasSubstr("The helper has finished"));
    EXPECT_THAT(terminal.shown(), Not(HasSubstr("Connection Invalidated")));
}

TEST_F(HelperInATerminal, TellsWhenACommandWasRefused) {
    ASSERT_EQ(runProgram({"/usr/libexec/kestrav/kestrav-bless", "install"}).exitStatus, 0);
    Terminal terminal = inTerminal({"run", "umount", "/dev/sdzzs1"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    terminal.type("wrong\n");
    EXPECT_EQ(terminal.wait(), 1);
    EXPECT_THAT(terminal.shown(), HasSubstr("remote proxy error: Refused: an administrator did not agree."));
}

TEST_F(HelperInATerminal, IsUninstalledAfterThePassword) {
    ASSERT_EQ(runProgram({"/usr/libexec/kestrav/kestrav-bless", "install"}).exitStatus, 0);
    Terminal terminal = inTerminal({"uninstall"});
    ASSERT_TRUE(terminal.isAsked()) << terminal.shown();
    terminal.type("secret\n");
    EXPECT_EQ(terminal.wait(), 0) << terminal.shown();
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(HelperInATerminal, ShowsItsStatus) {
    EXPECT_EQ(runProgram({kestravctl_, "helper", "status"}).out, "The helper is not installed.\n");
    ASSERT_EQ(runProgram({"/usr/libexec/kestrav/kestrav-bless", "install"}).exitStatus, 0);
    EXPECT_EQ(runProgram({kestravctl_, "helper", "status"}).out,
              "The helper is installed and starts when it is needed.\n");
    EXPECT_EQ(runProgram({kestravctl_, "helper", "run", "umount", "/dev/sdzzs1"}).exitStatus, 0);
    EXPECT_EQ(runProgram({kestravctl_, "helper", "status"}).out, "The helper is installed and running.\n");
    daemons_.killBus();
    EXPECT_EQ(runProgram({kestravctl_, "helper", "status"}).exitStatus, 1);
}

}  // namespace
}  // namespace kestrav
