#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/sandbox/runProgram.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/helper/HelperCaller.h"
#include "tests/services/linesSaying.h"
#include "tests/signalOne.h"

namespace kestrav {

inline constexpr const char* kBless = "/usr/libexec/kestrav/kestrav-bless";
inline constexpr const char* kLog = "/run/helper.log";
inline constexpr const char* kImage = "/run/image.fds";
inline constexpr uid_t kAdmin = 4711;
inline constexpr uid_t kGuest = 4712;
inline constexpr std::size_t kDiskBytes = std::size_t{4} << 20U;
inline constexpr std::streamoff kFirmwareByte = 786432;

inline const std::vector<std::string> kWrite{std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"};

inline std::string callUnmount() {
    return callHelper("umount", {"/dev/sdzzs1"});
}

inline std::string callWrite() {
    return callHelper("dd", kWrite);
}

/// The real helper, installed by the real installer, on a real system bus with the real polkitd, beside a simulated
/// accessory; nobody but this test sees any of it.
class Helper : public testing::Test {
  protected:
    explicit Helper(std::string disk = patternOf(kDiskBytes, 7)) : before_(std::move(disk)) {}

    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        accessory_.emplace(before_);
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        std::filesystem::create_directory("/usr/libexec/kestrav");
        std::filesystem::copy_file(KESTRAV_BLESS, kBless);
        std::filesystem::copy_file(KESTRAV_HELPER, "/usr/libexec/kestrav/kestrav-helper");
        SystemDaemons::addActions(kBless);
        ASSERT_EQ(runProgram({kBless, "install"}).exitStatus, 0);
        std::ofstream(kImage, std::ios::binary) << image_;
        std::filesystem::permissions(kImage, std::filesystem::perms(0644));
    }

    /// `decision`: see SystemDaemons.
    void startDaemons(const std::string& decision = {}) { daemons_.start(decision); }

    /// Starts the helper in this test's view of devices; the bus would start it in the real one.
    /// What it writes to its standard error goes to the file `errors`.
    void startHelper(const std::string& errors = kLog) {
        std::vector<std::string> environment;
        for (const char* name : {"LD_PRELOAD", "UMOCKDEV_DIR"}) {
            if (const char* value = std::getenv(name); value != nullptr) {
                environment.push_back(std::string(name) + "=" + value);
            }
        }
        helper_ = ChildProcess::start({"/bin/sh", "-c", std::string("exec ") + KESTRAV_HELPER + " 2>>" + errors},
                                      environment);
        ASSERT_TRUE(eventually(helperHasItsName));
    }

    static std::string log() {
        std::ostringstream text;
        text << std::ifstream(kLog).rdbuf();
        return text.str();
    }

    /// The one process that works on a request.
    pid_t jobProcess() const {
        std::vector<pid_t> children;
        eventually([&] { return !(children = childrenOf(helper_.pid())).empty(); });
        return children.empty() ? -1 : children.front();
    }

    bool diskIsUntouched() const { return accessory_->diskBytes() == before_; }
    bool diskHasTheImage() const {
        std::string after = before_;
        return accessory_->diskBytes() == after.replace(kFirmwareByte, image_.size(), image_);
    }

    /// Nothing was done, and exactly one line of the log is about that user and says so.
    void expectOneRefusal(uid_t uid, const std::string& words) const {
        EXPECT_TRUE(diskIsUntouched());
        const std::string who = "kestrav-helper: user " + std::to_string(uid) + ": ";
        EXPECT_EQ(linesSaying(log(), who), 1U) << log();
        EXPECT_EQ(linesSaying(log(), words), 1U) << log();
    }

    const std::string before_;
    const std::string image_ = patternOf(40000, 3);
    std::optional<SimulatedAccessory> accessory_;
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
    ChildProcess helper_;
};

/// A disk so large that a write of most of it can be met in the middle.
class HelperOnALargeDisk : public Helper {
  protected:
    HelperOnALargeDisk() : Helper(std::string(std::size_t{160} << 20U, '\0')) {}

    static void makeLargeImage() {
        std::ofstream(kImage, std::ios::binary) << std::string(std::size_t{150} << 20U, 'x');
    }

    /// Waits until the first block is written.
    bool isWriting() const {
        return eventually([this] {
            std::ifstream disk(accessory_->nodes() / "sdzz", std::ios::binary);
            disk.seekg(kFirmwareByte);
            return disk.get() == 'x';
        });
    }

    /// Starts the helper and a write of root's, and stops the process that carries it out once it has written
    /// something.
    void holdInMidWrite() {
        startDaemons();
        startHelper();
        makeLargeImage();
        user_.emplace(0, callWrite);
        user_->go();
        job_ = jobProcess();
        ASSERT_TRUE(isWriting());
        signalOne(job_, SIGSTOP);
    }

    std::optional<UserProcess> user_;
    pid_t job_ = -1;
};

}  // namespace kestrav
