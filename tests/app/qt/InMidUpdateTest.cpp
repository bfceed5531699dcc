#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/AnswerSinks.h"
#include "app/qt/AccessoryLine.h"
#include "app/qt/AccessoryWatch.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/PushButtonOutlet.h"
#include "app/qt/StatusLine.h"
#include "app/qt/StatusLineAnswers.h"
#include "app/qt/UpdatePresenter.h"
#include "command/CommandService.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "device/linux/UdevDeviceRegistry.h"
#include "device/linux/UdevEvents.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeVolumes.h"
#include "tests/device/linux/Testbed.h"
#include "tests/places.h"

namespace kestrav {
namespace {

constexpr const char* kWrote = "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.";
constexpr const char* kLost = "Failed: the disk sdzz did not confirm that it kept the bytes.";

/// The window with the engine and the watch, both on udev, and a service that answers a write when it is told to.
class InMidUpdate : public ::testing::Test {
  protected:
    InMidUpdate() {
        presenter_.setFound([this] { return engine_.device; });
        presenter_.setLookAgain([this] { watch_.look(); });
        service_.setBehaviour([this](LoopbackConnection& connection) {
            if (isUnmounted_.exchange(true)) {
                isWriting_ = true;
                for (int look = 0; look < 1200 && !mayAnswer_; ++look)
                    std::this_thread::sleep_for(std::chrono::milliseconds(25));
                return answers(answer_)(connection);
            }
            answers("sdzz1 was not mounted.")(connection);
        });
        bed_.attachAccessory();
        watch_.begin();
        window_.show();
    }

    /// As a kernel may: under another name, for the old one is still held.
    void plugInAgain() {
        std::string description = contentsOf(places::ofSource("simulator/accessory.umockdev"));
        std::string usb = Testbed::kUsb;
        std::string disk = Testbed::kDisk;
        for (std::string* text : {&description, &usb, &disk}) {
            replaceIn(*text, "1-2", "1-3");
            replaceIn(*text, "001/002", "001/003");
            replaceIn(*text, "131:", "132:");
            replaceIn(*text, "MAJOR=131", "MAJOR=132");
            replaceIn(*text, "sdzz", "sdyy");
            replaceIn(*text, "host2/target2:0:0/2:0:0:0", "host3/target3:0:0/3:0:0:0");
        }
        bed_.plugIn(description);
        bed_.announce(usb, "add");
        bed_.announce(disk, "add");
    }
    static void replaceIn(std::string& text, std::string_view before, std::string_view after) {
        for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos; at += after.size())
            text.replace(at, before.size(), after);
    }
    bool hasAccessory() { return window_.accessoryLine().text().startsWith("Kestrav Accessory"); }
    bool hasNone() { return window_.accessoryLine().text() == "Plug the accessory in."; }
    QString words() { return window_.panel().words(); }
    bool isStillWorking() {
        return words().contains("Don't unplug the accessory.") && !again().isVisible() &&
               !window_.findChild<QPushButton*>("firmwareBtn")->isEnabled();
    }
    QPushButton& again() { return *window_.findChild<QPushButton*>("againBtn"); }

    /// Runs an update. Meanwhile each step is taken when it is due, in their order; then the service answers.
    struct Step {
        std::function<bool()> isDue;
        std::function<void()> take;
    };
    void update(const std::vector<Step>& steps, std::string answer) {
        answer_ = std::move(answer);
        std::size_t next = 0;
        QTimer often;
        QObject::connect(&often, &QTimer::timeout, [&] {
            if (next < steps.size() && steps[next].isDue()) steps[next++].take();
            mayAnswer_ = next == steps.size();
        });
        often.start(5);
        const std::string image = folder_.file("image.fds", std::string(1000, 'x'));
        presenter_.updateBegins(button_, image);
        window_.whileBusy([&] { engine_.firmwareUpdate(image); });
        presenter_.updateEnded(button_, image);
        EXPECT_EQ(next, steps.size()) << "step was not due: " << window_.accessoryLine().text().toStdString();
    }
    Step pullOutInTheWrite() {
        return {[this] { return isWriting_.load(); }, [this] { bed_.detachAccessory(); }};
    }

    Testbed bed_;
    TemporaryFolder folder_;
    MainWindow window_;
    PushButtonOutlet button_{*window_.findChild<QPushButton*>("firmwareBtn")};
    UdevDeviceRegistry udev_;
    WatchedRegistry registry_{udev_};
    UdevEvents events_;
    UpdatePresenter presenter_{window_.panel(), registry_, BoardReader({folder_.path()})};
    AccessoryWatch watch_{udev_, events_, [this](const AccessoryWatch::Accessories& attached) {
                              window_.accessoryLine().showAccessories(attached);
                              presenter_.takeAccessories(attached);
                          }};
    FakeVolumes volumes_;
    FakeDisks disks_;
    RecordingLog log_;
    StatusLineAnswers ownWords_{window_.statusLine()};
    AnswerSinks answers_{presenter_.record(), ownWords_};
    std::string answer_;
    std::atomic<bool> isUnmounted_ = false;
    std::atomic<bool> isWriting_ = false;
    std::atomic<bool> mayAnswer_ = false;
    LoopbackService service_;
    CommandService commands_{log_, {.port = service_.port(), .connectSeconds = 5, .readSeconds = 40}, &answers_};
    KestravDevice engine_{registry_, volumes_, disks_, commands_, std::cout};
};

TEST_F(InMidUpdate, TheAccessoryComesAndGoesAndThePanelWaitsForTheService) {
    ASSERT_TRUE(hasAccessory()) << window_.accessoryLine().text().toStdString();
    update({pullOutInTheWrite(),
            {[this] { return hasNone(); },
             [this] {
                 EXPECT_TRUE(isStillWorking()) << words().toStdString();
                 plugInAgain();
             }},
            {[this] { return hasAccessory(); }, [this] { EXPECT_TRUE(isStillWorking()) << words().toStdString(); }}},
           kWrote);
    EXPECT_EQ(words(), "The firmware is on the accessory, read back and equal. You may unplug it.");
    EXPECT_TRUE(hasAccessory());
}

TEST_F(InMidUpdate, AnAccessoryThatIsGoneIsSentTheImageAgainWhenItIsBack) {
    update({pullOutInTheWrite(), {[this] { return hasNone(); }, [] {}}}, kLost);
    const QString said = words();
    EXPECT_TRUE(said.contains("the accessory was unplugged in the middle")) << said.toStdString();
    EXPECT_FALSE(again().isVisible());
    plugInAgain();
    EXPECT_TRUE(QTest::qWaitFor([this] { return hasAccessory() && again().isVisible(); }, 20000));
    EXPECT_EQ(words(), said);
}

}  // namespace
}  // namespace kestrav
