#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

#include "device/linux/UdevDeviceRegistry.h"
#include "tests/device/linux/PrivateMounts.h"
#include "tests/device/linux/Testbed.h"
#include "tests/places.h"
#include "tests/signalOne.h"

namespace kestrav {

void PrintTo(const UsbDevice& device, std::ostream* out) {
    *out << device.id << ' ' << device.name << ' ' << device.disk.value_or("(no disk)");
}

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

constexpr std::int64_t kVendor = 0x10D6;
constexpr std::int64_t kProduct = 0xFD01;

auto usbDevice(std::uint32_t id, const std::string& name, const std::optional<std::string>& disk) {
    return AllOf(Field(&UsbDevice::id, id), Field(&UsbDevice::name, name), Field(&UsbDevice::disk, disk));
}

class UdevRegistry : public ::testing::Test {
  protected:
    std::vector<UsbDevice> found(std::int64_t ofVendor = kVendor, std::int64_t ofProduct = kProduct) {
        const RegistryAnswer answer = registry_.usbDevices(ofVendor, ofProduct);
        EXPECT_EQ(answer.status, 0);
        EXPECT_TRUE(answer.devices);
        return answer.devices.value_or(std::vector<UsbDevice>());
    }

    Testbed bed_;
    UdevDeviceRegistry registry_;
};

TEST_F(UdevRegistry, FindsTheAccessory) {
    bed_.plugInSimulated("accessory");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x10002, "Kestrav Accessory", "sdzz")));
}

TEST_F(UdevRegistry, FindsTwoAccessoriesInTheOrderOfTheirPorts) {
    bed_.plugInSimulated("two-accessories");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x10002, "Kestrav Accessory", "sdzy"),
                                     usbDevice(0x10003, "Kestrav Accessory", "sdzz")));
}

TEST_F(UdevRegistry, FindsAnAccessoryWithoutADisk) {
    bed_.plugInSimulated("accessory-without-disk");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x10002, "Kestrav Accessory", std::nullopt)));
}

TEST_F(UdevRegistry, CallsANamelessAccessoryByItsPort) {
    bed_.plugInSimulated("accessory-without-name");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x10002, "1-2", "sdzz")));
}

TEST_F(UdevRegistry, CallsAnAccessoryWithAnEmptyNameByItsPort) {
    bed_.plugIn(
        "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=10d6\nA: idProduct=fd01\nA: product=\n");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0, "1-7", std::nullopt)));
}

TEST_F(UdevRegistry, TellsNothingOfOtherDevices) {
    bed_.plugInFrom(places::ofBuilt("tests/device/linux/others.umockdev"));
    EXPECT_THAT(found(), IsEmpty());
    bed_.plugInSimulated("accessory");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x10002, "Kestrav Accessory", "sdzz")));
    EXPECT_THAT(found(0x1d6b, 3), ElementsAre(usbDevice(0x20004, "Other Device 3", std::nullopt)));
    EXPECT_THAT(found(0x1d6b, 10), ElementsAre(usbDevice(0x2000b, "Other Device 10", "stick10")));
}

TEST_F(UdevRegistry, NeedsBothIdentifiersToMatch) {
    bed_.plugInSimulated("accessory");
    EXPECT_THAT(found(kVendor, kProduct + 1), IsEmpty());
    EXPECT_THAT(found(kVendor + 1, kProduct), IsEmpty());
    EXPECT_THAT(found(kProduct, kVendor), IsEmpty());
}

TEST_F(UdevRegistry, MatchesNothingThatNoDeviceCanHave) {
    bed_.plugInSimulated("accessory");
    constexpr std::int64_t kTurn = std::int64_t{1} << 32;
    for (const std::int64_t wrap : {std::int64_t{0x10000}, std::int64_t{-0x10000}, kTurn, -kTurn}) {
        EXPECT_THAT(found(kVendor + wrap, kProduct), IsEmpty()) << wrap;
        EXPECT_THAT(found(kVendor, kProduct + wrap), IsEmpty()) << wrap;
    }
    for (const std::int64_t other : {std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        EXPECT_THAT(found(other, kProduct), IsEmpty()) << other;
        EXPECT_THAT(found(kVendor, other), IsEmpty()) << other;
    }
}

// The kernel has no such numbers; a registry that looked for them would take them from whoever plays the kernel.
TEST_F(UdevRegistry, LooksForNothingThatHasMoreThanSixteenBits) {
    bed_.plugIn(
        "P: /devices/usb1/1-3\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=110d6\nA: idProduct=1fd01\nA: product=Vast\nA: busnum=1\nA: devnum=3\n");
    EXPECT_TRUE(UdevDeviceRegistry().usbDevices(0x110d6, 0x1fd01).devices.value().empty());
}

TEST_F(UdevRegistry, LosesAnUnpluggedAccessory) {
    bed_.plugInSimulated("accessory");
    EXPECT_EQ(found().size(), 1U);
    bed_.unplug("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2");
    EXPECT_THAT(found(), IsEmpty());
}

/// A process of its own that pulls the accessory and plugs it in again without end, each time with a new number.
class PlugLoop {
  public:
    explicit PlugLoop(const std::filesystem::path& bed)
        : place_(bed / "sys/devices/pci0000:00/0000:00:14.0/usb1/1-2"),
          aside_(bed / "unplugged"),
          process_(::fork()) {
        if (process_ == 0) run();
    }
    ~PlugLoop() {
        signalOne(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    PlugLoop(const PlugLoop&) = delete;
    PlugLoop& operator=(const PlugLoop&) = delete;

  private:
    [[noreturn]] void run() const {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (unsigned turn = 0;; ++turn) {
            if (::rename(place_.c_str(), aside_.c_str()) != 0) ::_exit(1);
            std::ofstream(aside_ / "devnum") << 2 + turn % 100 << '\n';
            // Of many lengths, so that it happens in the middle of each step of a walk.
            ::usleep(turn * 37 % 1000);
            if (::rename(aside_.c_str(), place_.c_str()) != 0) ::_exit(1);
            ::usleep(turn * 131 % 10'000);
        }
    }

    std::filesystem::path place_;
    std::filesystem::path aside_;
    pid_t process_;
};

TEST_F(UdevRegistry, TellsAllOrNothingOfAnAccessoryThatComesAndGoes) {
    bed_.plugInSimulated("accessory");
    const UsbDevice whole = found().at(0);
    const PlugLoop loop(bed_.root());
    int times = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int walks = 0;
    // On a slow computer it may take some more until both have been seen.
    while ((walks < 300 || times == 0 || times == walks) && std::chrono::steady_clock::now() < end) {
        ++walks;
        for (const UsbDevice& device : found()) {
            ++times;
            EXPECT_EQ(device.id >> 16U, whole.id >> 16U);
            EXPECT_EQ(std::tie(device.name, device.port, device.disk, device.diskBytes, device.blockNumbers),
                      std::tie(whole.name, whole.port, whole.disk, whole.diskBytes, whole.blockNumbers));
        }
    }
    EXPECT_GT(times, 0) << walks;
    EXPECT_LT(times, walks) << "it was never seen to be gone";
}

TEST_F(UdevRegistry, FindsNothingWhereNothingIsPluggedIn) {
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(UdevRegistry, TakesTheFirstOfTwoDisks) {
    bed_.plugIn(
        "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=10d6\nA: idProduct=fd01\nA: product=Two\nA: busnum=3\nA: devnum=127\n\n"
        "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:1/block/sdzd\nE: SUBSYSTEM=block\nE: DEVTYPE=disk\n\n"
        "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:0/block/sdze\nE: SUBSYSTEM=block\nE: DEVTYPE=disk\n\n"
        "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:0/block/sdze/sdze1\nE: SUBSYSTEM=block\n"
        "E: DEVTYPE=partition\n");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0x3007f, "Two", "sdze")));
}

TEST_F(UdevRegistry, TakesTheFirstOfManyDisksInWhicheverOrderTheyCame) {
    bed_.plugIn(
        "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=10d6\nA: idProduct=fd01\nA: product=Many\nA: busnum=3\nA: devnum=127\n");
    // Each next one comes before all others. A folder lists them in the order of their making, or against it, or in
    // none.
    for (int disk = 9; disk >= 0; --disk) {
        const std::string digit = std::to_string(disk);
        bed_.plugIn("P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:" + digit + "/block/sdz" + digit +
                    "\nE: SUBSYSTEM=block\nE: DEVTYPE=disk\n");
        EXPECT_THAT(found(), ElementsAre(usbDevice(0x3007f, "Many", "sdz" + digit)));
    }
}

// A description of an accessory at port 1-7, of its disk sdzd and of two partitions.
constexpr const char* kAccessoryWithSerial =
    "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
    "A: idVendor=10d6\nA: idProduct=fd01\nA: product=One\nA: serial=KA 0017\nA: busnum=3\nA: devnum=127\n\n"
    "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:0/block/sdzd\nE: SUBSYSTEM=block\nE: DEVTYPE=disk\n"
    "E: MAJOR=130\nE: MINOR=624\nA: dev=130:624\nA: size=32768\n\n"
    "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:0/block/sdzd/sdzd1\nE: SUBSYSTEM=block\nE: DEVTYPE=partition\n"
    "E: MAJOR=130\nE: MINOR=625\nA: dev=130:625\nA: size=24576\n\n"
    "P: /devices/usb1/1-7/1-7:1.0/host1/1:0:0:0/block/sdzd/sdzd2\nE: SUBSYSTEM=block\nE: DEVTYPE=partition\n"
    "E: MAJOR=130\nE: MINOR=626\nA: dev=130:626\nA: size=8\n";

TEST_F(UdevRegistry, TellsSerialNumberPortSizeAndTheNumbersOfWhatCanBeMounted) {
    bed_.plugIn(kAccessoryWithSerial);
    const std::vector<UsbDevice> devices = found();
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0].serial, "KA 0017");
    EXPECT_EQ(devices[0].port, "1-7");
    EXPECT_EQ(devices[0].diskBytes, 16U << 20);
    EXPECT_THAT(devices[0].blockNumbers, ElementsAre(::makedev(130, 624), ::makedev(130, 625), ::makedev(130, 626)));
}

TEST_F(UdevRegistry, TellsNothingOfASerialNumberOrASizeThatIsNotThere) {
    bed_.plugInSimulated("accessory-without-disk");
    const std::vector<UsbDevice> devices = found();
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0].serial, "");
    EXPECT_EQ(devices[0].diskBytes, std::nullopt);
    EXPECT_THAT(devices[0].blockNumbers, IsEmpty());
}

TEST_F(UdevRegistry, TakesNoPartitionForADisk) {
    bed_.plugIn(
        "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=10d6\nA: idProduct=fd01\nA: product=Part\n\n"
        "P: /devices/usb1/1-7/block/sdze/sdze1\nE: SUBSYSTEM=block\nE: DEVTYPE=partition\n");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0, "Part", std::nullopt)));
}

TEST_F(UdevRegistry, TakesNoInterfaceForADevice) {
    bed_.plugIn(
        "P: /devices/usb1/1-7/1-7:1.0\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n"
        "A: idVendor=10d6\nA: idProduct=fd01\n");
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(UdevRegistry, TakesTheNamesBytesAsTheyAre) {
    bed_.plugIn(
        "P: /devices/usb1/1-7\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
        "A: idVendor=10d6\nA: idProduct=fd01\nA: product=%s%n \u00e9 $(x)\n");
    EXPECT_THAT(found(), ElementsAre(usbDevice(0, "%s%n \u00e9 $(x)", std::nullopt)));
}

TEST(UdevRegistryWithoutSysfs, IsOutOfReachWithStatus5) {
    const int result = withPrivateMounts([] {
        if (::mount("none", "/sys", "tmpfs", 0, nullptr) != 0) return 3;
        const RegistryAnswer answer = UdevDeviceRegistry().usbDevices(kVendor, kProduct);
        return answer.devices ? 2 : answer.status == 5 ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace kestrav
