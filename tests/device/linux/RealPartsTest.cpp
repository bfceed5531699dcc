// The engine on the real registry, volumes and disk calls, with a simulated accessory plugged in.
#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>

#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/fakes/bytes.h"
#include "tests/device/linux/Testbed.h"

namespace kestrav {
namespace {

// What is mounted is for other tests: the engine would unmount a drive of this machine.
class EngineOnRealParts : public ::testing::Test {
  protected:
    EngineOnRealParts() { engine_.setParent(log_); }

    std::filesystem::path node(const std::string& name) const { return bed_.root() / "dev" / name; }
    void fillDisk(const std::string& name, std::uintmax_t size) const {
        std::filesystem::resize_file(node(name), size);
    }

    Testbed bed_;
    UdevDeviceRegistry registry_;
    FakeVolumes volumes_;
    PosixDiskCalls disks_;
    LoopbackService service_;
    RecordingLog entries_;
    CommandService commands_{entries_, {.port = service_.port()}};
    std::shared_ptr<LogLines> log_ = std::make_shared<LogLines>();
    KestravDevice engine_{registry_, volumes_, disks_, commands_, std::cout};
};

TEST_F(EngineOnRealParts, ReadsBackWhatItWrote) {
    bed_.plugInSimulated("accessory");
    fillDisk("sdzz", 16 << 20);
    EXPECT_TRUE(engine_.writeDevice(786432, 8, bytes("firmware")));
    EXPECT_EQ(engine_.readDevice(786431, 10), bytes({"\0firmware\0", 10}));
    EXPECT_EQ(engine_.device.bsdName, "sdzz");
    EXPECT_EQ(engine_.device.name, "Kestrav Accessory");
    EXPECT_THAT(log_->lines, ::testing::IsEmpty());
}

TEST_F(EngineOnRealParts, SaysWhichNodeIsMissing) {
    bed_.plugInSimulated("accessory-without-disk");
    EXPECT_THAT(engine_.readDevice(0, 1), ::testing::IsEmpty());
    EXPECT_THAT(log_->lines, ::testing::ElementsAre("Unabled to open /dev/rnil"));
}

TEST_F(EngineOnRealParts, IsNotReadyWithoutAnAccessory) {
    EXPECT_FALSE(engine_.writeDevice(0, 1, bytes("x")));
    EXPECT_THAT(log_->lines, ::testing::ElementsAre("Device not ready yet!"));
}

TEST_F(EngineOnRealParts, UpdatesTheLastOfTwoAccessories) {
    bed_.plugInSimulated("two-accessories");
    EXPECT_TRUE(engine_.pushDevice(2048, "image"));
    ASSERT_EQ(service_.requests().size(), 2U);
    const boost::json::value request = boost::json::parse(service_.requests()[1]);
    EXPECT_EQ(request.at("arguments").at(1).as_string(), "of=/dev/rsdzz");
}

}  // namespace
}  // namespace kestrav
