#include <functional>
#include <gtest/gtest.h>
#include <libudev.h>
#include <string_view>
#include <utility>

#include "device/linux/UdevDeviceRegistry.h"
#include "tests/device/linux/Testbed.h"

// What the linker puts in place of libudev's calls. Each does the real thing unless told.
namespace {

struct Faults {
    bool noContext = false;
    bool noEnumeration = false;
    bool noMatch = false;
    std::string_view beforeAttribute;     ///< when this is about to be read ...
    std::string_view beforeDevice;        ///< ... or a device with a path that ends so is about to be looked up ...
    std::function<void()> somethingElse;  ///< ... this happens, once
};

Faults& faults() {
    static Faults state;
    return state;
}

void letSomethingHappen() {
    if (const auto happening = std::exchange(faults().somethingElse, nullptr)) happening();
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

const char* __real_udev_device_get_sysattr_value(udev_device* device, const char* attribute);
const char* __wrap_udev_device_get_sysattr_value(udev_device* device, const char* attribute) {
    if (!faults().beforeAttribute.empty() && attribute == faults().beforeAttribute) letSomethingHappen();
    return __real_udev_device_get_sysattr_value(device, attribute);
}

udev_device* __real_udev_device_new_from_syspath(udev* context, const char* path);
udev_device* __wrap_udev_device_new_from_syspath(udev* context, const char* path) {
    const std::string_view device = faults().beforeDevice;
    if (!device.empty() && std::string_view(path).ends_with(device)) letSomethingHappen();
    return __real_udev_device_new_from_syspath(context, path);
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

// What a registry says while something happens in the middle of its walk.
class WalkInterrupted : public testing::Test {
  protected:
    static constexpr const char* kAccessory = "/devices/pci0000:00/0000:00:14.0/usb1/1-2";

    void SetUp() override {
        faults() = {};
        bed_.plugInSimulated("accessory");
    }
    void TearDown() override { faults() = {}; }

    void unplug() { bed_.unplug(std::string("/sys") + kAccessory); }
    void unplugDisk() { bed_.unplug(std::string("/sys") + kAccessory + kDisk); }
    void unplugPartition() { bed_.unplug(std::string("/sys") + kAccessory + kDisk + "/sdzz1"); }
    void replug() {
        unplug();
        bed_.plugIn(std::string("P: ") + kAccessory +
                    "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
                    "A: idVendor=10d6\nA: idProduct=fd01\nA: product=Another\nA: busnum=1\nA: devnum=3\n");
    }
    std::size_t found() {
        const RegistryAnswer answer = UdevDeviceRegistry().usbDevices(4310, 64769);
        EXPECT_EQ(faults().somethingElse, nullptr) << "nothing has happened";
        return answer.devices.value().size();
    }

  private:
    static constexpr const char* kDisk = "/1-2:1.0/host2/target2:0:0/2:0:0:0/block/sdzz";
    Testbed bed_;
};

TEST_F(WalkInterrupted, FindsADeviceThatStays) {
    faults().beforeAttribute = "product";
    faults().somethingElse = [] {};
    EXPECT_EQ(found(), 1U);
}

class WalkInterruptedBefore : public WalkInterrupted, public testing::WithParamInterface<const char*> {};

TEST_P(WalkInterruptedBefore, AnAttributeIsReadLeavesTheDeviceOut) {
    faults().beforeAttribute = GetParam();
    faults().somethingElse = [this] { unplug(); };
    EXPECT_EQ(found(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Attributes, WalkInterruptedBefore, testing::Values("busnum", "product", "serial", "size"));

TEST_F(WalkInterrupted, LeavesADeviceOutThatWentSinceTheScan) {
    faults().beforeDevice = "/usb1/1-2";
    faults().somethingElse = [this] { unplug(); };
    EXPECT_EQ(found(), 0U);
}

TEST_F(WalkInterrupted, LeavesADeviceOutWhoseDiskWentFirst) {
    faults().beforeDevice = "/block/sdzz";
    faults().somethingElse = [this] { unplugDisk(); };
    EXPECT_EQ(found(), 0U);
}

TEST_F(WalkInterrupted, LeavesADeviceOutInWhosePlaceAnotherCame) {
    faults().beforeAttribute = "serial";
    faults().somethingElse = [this] { replug(); };
    EXPECT_EQ(found(), 0U);
}

TEST_F(WalkInterrupted, LeavesADeviceOutInWhosePlaceAnotherCameOnceItsDiskWasRead) {
    faults().beforeDevice = "/sdzz1";
    faults().somethingElse = [this] { replug(); };
    EXPECT_EQ(found(), 0U);
}

TEST_F(WalkInterrupted, KeepsADeviceWhosePartitionWent) {
    faults().beforeDevice = "/sdzz1";
    faults().somethingElse = [this] { unplugPartition(); };
    EXPECT_EQ(found(), 1U);
}

}  // namespace
}  // namespace kestrav
