#include <QTest>
#include <gtest/gtest.h>
#include <vector>

#include "app/qt/AccessoryLine.h"
#include "app/qt/AccessoryWatch.h"
#include "device/linux/UdevDeviceRegistry.h"
#include "device/linux/UdevEvents.h"
#include "tests/device/linux/Testbed.h"

namespace kestrav {
namespace {

/// A registry that counts how often it is asked.
class CountingRegistry final : public DeviceRegistry {
  public:
    int asked = 0;
    RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) override {
        ++asked;
        return udev_.usbDevices(vendor, product);
    }

  private:
    UdevDeviceRegistry udev_;
};

class TheWatch : public ::testing::Test {
  protected:
    std::size_t count() const { return seen_ ? seen_->size() : 99; }
    void begin() {
        watch_.emplace(registry_, events_, [this](const AccessoryWatch::Accessories& attached) {
            seen_ = attached;
            ++told_;
        });
        watch_->begin();
    }

    Testbed bed_;
    CountingRegistry registry_;
    UdevEvents events_;
    AccessoryWatch::Accessories seen_;
    int told_ = 0;
    std::optional<AccessoryWatch> watch_;
};

TEST_F(TheWatch, KnowsWhatIsThereFromItsBeginning) {
    bed_.attachAccessory();
    begin();
    ASSERT_EQ(count(), 1U);
    EXPECT_EQ(seen_->front().disk, "sdzz");
}

TEST_F(TheWatch, SeesAnAccessoryComeAndGo) {
    begin();
    EXPECT_EQ(count(), 0U);
    bed_.attachAccessory();
    EXPECT_TRUE(QTest::qWaitFor([this] { return count() == 1; }, 20000));
    bed_.detachAccessory();
    EXPECT_TRUE(QTest::qWaitFor([this] { return count() == 0; }, 20000));
}

TEST_F(TheWatch, AsksAFewTimesForAHubOfTwenty) {
    begin();
    const int before = registry_.asked;
    for (int device = 0; device < 20; ++device) {
        const std::string path = "/devices/usb1/1-" + std::to_string(device + 1);
        bed_.plugIn("P: " + path + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: busnum=1\nA: devnum=" +
                    std::to_string(device + 1) + "\nA: idVendor=10d6\nA: idProduct=fd01\nA: product=Accessory\n");
        for (int event = 0; event < 10; ++event) {
            bed_.announce("/sys" + path, "change");
            // The testbed gives up where nobody reads what it tells.
            QCoreApplication::processEvents();
        }
    }
    EXPECT_TRUE(QTest::qWaitFor([this] { return count() == 20; }, 20000));
    EXPECT_LE(registry_.asked - before, 10) << "two hundred events";
}

TEST_F(TheWatch, IsNotWokenForOtherThings) {
    begin();
    const std::string path = "/devices/virtual/net/eth7";
    bed_.plugIn("P: " + path + "\nE: SUBSYSTEM=net\n");
    bed_.announce("/sys" + path, "add");
    EXPECT_FALSE(events_.take());
    bed_.attachAccessory();
    EXPECT_TRUE(QTest::qWaitFor([this] { return told_ == 2; }, 20000)) << "asked once at first, once for the accessory";
}

TEST_F(TheWatch, TakesAllThatWasToldAtOnce) {
    bed_.attachAccessory();
    EXPECT_TRUE(QTest::qWaitFor([this] { return events_.take(); }, 20000));
    EXPECT_FALSE(events_.take());
}

UsbDevice accessory(const std::string& name, std::optional<std::string> disk, const std::string& serial = "") {
    return {.id = 1, .name = name, .disk = std::move(disk), .serial = serial, .diskBytes = 16777216};
}

TEST(TheAccessoryLine, SaysWhatIsThereAndWhatTheUpdateTakes) {
    AccessoryLine line;
    EXPECT_EQ(line.text(), "") << "before anybody has looked";
    line.showAccessories(std::vector{accessory("Kestrav Accessory", "sdb", "KA17")});
    EXPECT_EQ(line.text(), "Kestrav Accessory · sdb · 16.8 MB · serial number KA17");
    EXPECT_EQ(line.accessibleName(), line.text());
    line.showAccessories(std::vector{accessory("One", "sdb"), accessory("Other", "sdc")});
    EXPECT_EQ(line.text(), "2 accessories are plugged in. The update takes Other · sdc · 16.8 MB");
    line.showAccessories(std::vector{UsbDevice{.id = 1, .name = "New", .disk = std::nullopt}});
    EXPECT_EQ(line.text(), "New · no disk yet");
    line.showAccessories(std::nullopt);
    EXPECT_EQ(line.text(), "The computer doesn't tell which devices are attached.");
    line.showAccessories(std::vector<UsbDevice>());
    EXPECT_EQ(line.text(), "Plug the accessory in.");
}

TEST(TheAccessoryLine, ShowsNoNameAsAnythingButText) {
    AccessoryLine line;
    line.showAccessories(std::vector{accessory("<b>x</b>\n\x1b[2J\u202egnp", "sdb")});
    EXPECT_EQ(line.text().section(u'·', 0, 0), "<b>x</b>\\x0a\\x1b[2J\\u{202e}gnp ");
    EXPECT_EQ(line.textFormat(), Qt::PlainText);
    EXPECT_TRUE(line.toolTip().contains("&lt;b&gt;"));
}

TEST(TheAccessoryLine, NeedsNoMoreRoomForALongName) {
    AccessoryLine line;
    const int before = line.minimumSizeHint().width();
    line.showAccessories(std::vector{accessory(std::string(127, 'W'), "sdb")});
    EXPECT_EQ(line.minimumSizeHint().width(), before);
}

}  // namespace
}  // namespace kestrav
