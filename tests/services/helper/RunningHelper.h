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

#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/places.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/runProgram.h"
#include "tests/services/ServiceRoom.h"
#include "tests/services/helper/HelperCaller.h"
#include "tests/signalOne.h"

namespace kestrav {

inline constexpr const char* kLog = "/run/helper.log";
inline const std::vector<std::string> kWrite{std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"};

inline std::string callUnmount() {
    return callHelper("umount", {"/dev/sdzzs1"});
}

inline std::string callWrite() {
    return callHelper("dd", kWrite);
}

/// The real helper, installed by the real installer, on a real system bus with the real polkitd, beside a simulated
/// accessory; nobody but this test sees any of it.
class Helper : public ServiceRoom {
  protected:
    using ServiceRoom::ServiceRoom;

    void SetUp() override {
        ServiceRoom::SetUp();
        if (IsSkipped()) return;
        std::filesystem::create_directory("/usr/libexec/kestrav");
        std::filesystem::copy_file(places::ofProgram("kestrav-bless"), kBless);
        std::filesystem::copy_file(places::ofProgram("kestrav-helper"), "/usr/libexec/kestrav/kestrav-helper");
        ASSERT_EQ(runProgram({kBless, "install"}).exitStatus, 0);
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
        helper_ = ChildProcess::start(
            {"/bin/sh", "-c", "exec " + places::ofProgram("kestrav-helper") + " 2>>" + errors}, environment);
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

    void expectOneRefusal(uid_t uid, const std::string& words) const {
        ServiceRoom::expectOneRefusal("kestrav-helper", log(), uid, words);
    }

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
