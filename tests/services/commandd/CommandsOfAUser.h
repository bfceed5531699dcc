#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/types.h>

#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/linesSaying.h"

namespace kestrav {

inline constexpr const char* kImage = "/run/image.fds";
inline constexpr uid_t kAdmin = 4711;
inline constexpr uid_t kGuest = 4712;
inline constexpr std::size_t kFirmwareByte = 786432;
inline const std::string kAskedFor = "dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: ";

/// The real service as root on a free port, with the real polkitd, beside a simulated accessory.
class CommandsOfAUser : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        accessory_.emplace(before_);
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        SystemDaemons::addActions("/usr/libexec/kestrav/kestrav-bless");
        std::ofstream(kImage, std::ios::binary) << image_;
        std::filesystem::permissions(kImage, std::filesystem::perms(0644));
    }

    void start(const std::string& decision = {}) {
        daemons_.start(decision);
        daemon_.emplace();
    }

    UserProcess writeAs(uid_t uid) const {
        return UserProcess(uid, [port = daemon_->port()] {
            const Client client(port);
            client.send(requestFor("dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
            return client.readOnce(60);
        });
    }

    bool diskIsUntouched() const { return accessory_->diskBytes() == before_; }
    bool diskHasTheImage() const {
        std::string after = before_;
        return accessory_->diskBytes() == after.replace(kFirmwareByte, image_.size(), image_);
    }
    /// Nothing was done, and exactly one line of the log is about that user and says so.
    void expectOneRefusal(uid_t uid, const std::string& words) const {
        EXPECT_TRUE(diskIsUntouched());
        const std::string who = "kestrav-commandd: user " + std::to_string(uid) + ": ";
        EXPECT_EQ(linesSaying(daemon_->log(), who), 1U) << daemon_->log();
        EXPECT_EQ(linesSaying(daemon_->log(), who + words), 1U) << daemon_->log();
    }
    bool hasNoChildren() const {
        return eventually([this] { return childrenOf(daemon_->pid()).empty(); });
    }

    const std::string before_ = patternOf(std::size_t{4} << 20U, 7);
    const std::string image_ = patternOf(40000, 3);
    std::optional<SimulatedAccessory> accessory_;
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
    std::optional<CommandDaemon> daemon_;
};

}  // namespace kestrav
