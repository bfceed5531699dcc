#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <ios>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

#include "tests/TemporaryFolder.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/linesSaying.h"

namespace kestrav {

inline constexpr const char* kBless = "/usr/libexec/kestrav/kestrav-bless";
inline constexpr const char* kImage = "/run/image.fds";
inline constexpr uid_t kAdmin = 4711;
inline constexpr uid_t kGuest = 4712;
inline constexpr std::streamoff kFirmwareByte = 786432;

/// What a case about one of the services needs around it: an administrator and a guest, the real polkitd on a real
/// system bus once it is started, a simulated accessory, and an image that everybody may read. Nobody but the case sees
/// it.
class ServiceRoom : public testing::Test {
  protected:
    explicit ServiceRoom(std::string disk = patternOf(std::size_t{4} << 20U, 7)) : before_(std::move(disk)) {}

    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        accessory_.emplace(before_);
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        SystemDaemons::addActions(kBless);
        std::ofstream(kImage, std::ios::binary) << image_;
        std::filesystem::permissions(kImage, std::filesystem::perms(0644));
    }

    bool diskIsUntouched() const { return accessory_->diskBytes() == before_; }
    bool diskHasTheImage() const {
        std::string after = before_;
        return accessory_->diskBytes() == after.replace(kFirmwareByte, image_.size(), image_);
    }
    /// Nothing was done, and exactly one line of the service's log is about that user and says so.
    void expectOneRefusal(const std::string& service, const std::string& log, uid_t uid,
                          const std::string& words) const {
        EXPECT_TRUE(diskIsUntouched());
        EXPECT_EQ(linesSaying(log, service + ": user " + std::to_string(uid) + ": "), 1U) << log;
        EXPECT_EQ(linesSaying(log, words), 1U) << log;
    }

    const std::string before_;
    const std::string image_ = patternOf(40000, 3);
    std::optional<SimulatedAccessory> accessory_;
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
};

}  // namespace kestrav
