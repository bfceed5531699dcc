#pragma once

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

#include "services/disk/MountTable.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/services/LoopDisk.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/asker/FakeConsent.h"
#include "tests/services/gate/LoopAsAccessory.h"

namespace kestrav {

/// The gate on real block devices, real mounts and real exclusive opening, in mounts of this program's own. Needs root.
class GateOnKernel : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: loop devices and mounts";
        std::filesystem::create_directories(place_);
        disk_.emplace(folder_.file("disk", before_));
        devices_.emplace(*disk_);
        makeNode("/dev/" + disk_->name(), disk_->number());
        makeNode("/dev/" + disk_->partitionName(), disk_->partitionNumber());
        std::filesystem::remove("/dev/r" + disk_->name());
        std::filesystem::remove("/dev/" + disk_->name() + "s1");
        std::filesystem::create_symlink(disk_->name(), "/dev/r" + disk_->name());
        std::filesystem::create_symlink(disk_->partitionName(), "/dev/" + disk_->name() + "s1");
    }
    void TearDown() override {
        while (::umount2(place_.c_str(), MNT_DETACH) == 0) {
        }
    }

    void makeFileSystem() {
        const std::string command = "mkfs.ext4 -q -F /dev/" + disk_->partitionName() + " >/dev/null 2>&1";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    void mountAt(const std::filesystem::path& place) {
        std::filesystem::create_directories(place);
        const std::string node = "/dev/" + disk_->partitionName();
        ASSERT_EQ(::mount(node.c_str(), place.c_str(), "ext4", 0, nullptr), 0);
    }
    bool isMounted() const { return !MountinfoTable().placesOf(disk_->partitionNumber()).value().empty(); }

    std::string perform(std::string_view command, const std::vector<std::string>& arguments) {
        FakeAsker root(0);
        return Gate(consent_, *devices_, mounts_, requests_).perform(root, command, arguments).text;
    }
    std::string unmount() { return perform("umount", {"/dev/" + disk_->name() + "s1"}); }
    std::string write(const std::string& image, std::uint64_t block = 1536) {
        const std::string of = "of=/dev/r" + disk_->name();
        return perform("dd", {"if=" + image, of, "seek=" + std::to_string(block), "bs=512"});
    }
    std::string onDisk() const { return contentsOf(folder_.path() / "disk"); }

    const std::string before_ = patternOf(std::size_t{4} << 20U, 7);
    TemporaryFolder folder_;
    const std::filesystem::path place_ = folder_.path() / "mounted here";
    std::optional<LoopDisk> disk_;
    std::optional<LoopAsAccessory> devices_;
    FakeConsent consent_;
    MountinfoTable mounts_;
    RecordingLog log_;
    RequestLog requests_{log_};
};

}  // namespace kestrav
