#include <gtest/gtest.h>
#include <libudev.h>

#include "device/linux/UdevDeviceRegistry.h"

// What the linker puts in place of libudev's calls. Each does the real thing unless told.
namespace {

struct Faults {
    bool noContext = false;
    bool noEnumeration = false;
    bool noMatch = false;
};

Faults& faults() {
    static Faults state;
    return state;
}

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
udev* __real_udev_new();
udev_enumerate* __real_udev_enumerate_new(udev* context);
int __real_udev_enumerate_add_match_sysattr(udev_enumerate* enumeration, const char* attribute, const char* value);

udev* __wrap_udev_new() {
    return faults().noContext ? nullptr : __real_udev_new();
}

udev_enumerate* __wrap_udev_enumerate_new(udev* context) {
    return faults().noEnumeration ? nullptr : __real_udev_enumerate_new(context);
}

int __wrap_udev_enumerate_add_match_sysattr(udev_enumerate* enumeration, const char* attribute, const char* value) {
    return faults().noMatch ? -12 : __real_udev_enumerate_add_match_sysattr(enumeration, attribute, value);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

class UdevFaults : public testing::Test {
  protected:
    void SetUp() override { faults() = {}; }
    void TearDown() override { faults() = {}; }
};
using UdevFaultsDeathTest = UdevFaults;

TEST_F(UdevFaults, AreNoneAsARule) {
    EXPECT_EQ(UdevDeviceRegistry().usbDevices(4310, 64769).status, 0);
}

TEST_F(UdevFaults, NoContextMeansThatTheRegistryIsOutOfReach) {
    faults().noContext = true;
    const RegistryAnswer answer = UdevDeviceRegistry().usbDevices(4310, 64769);
    EXPECT_EQ(answer.status, 5);
    EXPECT_FALSE(answer.devices);
}

TEST_F(UdevFaultsDeathTest, AQuestionThatCannotBeMadeStopsTheProcess) {
    faults().noEnumeration = true;
    EXPECT_EXIT(UdevDeviceRegistry().usbDevices(4310, 64769), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(UdevFaultsDeathTest, AQuestionThatCannotNameTheIdentifiersStopsTheProcess) {
    faults().noMatch = true;
    EXPECT_EXIT(UdevDeviceRegistry().usbDevices(4310, 64769), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrav
