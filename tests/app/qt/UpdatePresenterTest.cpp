#include <QCoreApplication>
#include <QPushButton>
#include <QTest>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <unistd.h>

#include "app/AnswerSinks.h"
#include "app/Button.h"
#include "app/ViewController.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/PushButtonOutlet.h"
#include "app/qt/StatusLine.h"
#include "app/qt/StatusLineAnswers.h"
#include "app/qt/UpdatePresenter.h"
#include "command/CommandService.h"
#include "command/HelperInstallation.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "device/attachedAccessories.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/command/fakes/FakeAuthorization.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeRegistry.h"
#include "tests/device/fakes/FakeVolumes.h"

namespace kestrav {
namespace {

/// The real window and engine and a service on the loopback; an update is what the presenter hears of one.
class Presented : public ::testing::Test {
  protected:
    Presented() {
        presenter_.setFound([this] { return engine_.device; });
        presenter_.setLookAgain([this] { presenter_.takeAccessories(attachedAccessories(devices_)); });
        std::ofstream(image_) << std::string(1000, 'x');
    }
    void plugIn() { devices_.plugIn({.id = 1, .name = "Accessory", .disk = "sdzz"}); }
    void update() {
        presenter_.updateBegins(button_, image_);
        window_.whileBusy([this] { engine_.firmwareUpdate(image_); });
        presenter_.updateEnded(button_, image_);
        QCoreApplication::processEvents();
    }
    QString words() { return window_.panel().words(); }
    bool comes(const QString& part) {
        return QTest::qWaitFor([&] { return words().contains(part); }, 30000);
    }
    QPushButton& again() { return *window_.findChild<QPushButton*>("againBtn"); }
    void post(std::string_view phase, std::string_view more = "") {
        const std::string fresh = board_ / "new";
        std::ofstream(fresh) << R"({"version":1,"disk":"sdzz","user":)" << ::geteuid() << R"(,"asker":)" << ::getpid()
                             << R"(,"writer":)" << ::getpid() << R"(,"writerStart":)" << ownStart()
                             << R"(,"firstBlock":1536,"bytes":1000,"phase":")" << phase
                             << R"(","done":500,"of":1000,"begun":2000)" << more << "}";
        std::filesystem::rename(fresh, board_ / "sdzz.json");
    }
    static std::string ownStart() {
        std::ifstream stat("/proc/self/stat");
        std::string line;
        std::getline(stat, line);
        std::istringstream rest(line.substr(line.rfind(')') + 2));
        std::string field;
        for (int number = 3; number <= 22; ++number)
            rest >> field;
        return field;
    }

    TemporaryFolder folder_;
    std::filesystem::path board_ = folder_.path() / "board";
    bool isMade_ = std::filesystem::create_directory(board_);
    std::string image_ = folder_.path() / "image.fds";
    MainWindow window_;
    PushButtonOutlet button_{*window_.findChild<QPushButton*>("firmwareBtn")};
    FakeRegistry devices_;
    WatchedRegistry registry_{devices_};
    FakeVolumes volumes_;
    FakeDisks disks_;
    RecordingLog log_;
    UpdatePresenter presenter_{window_.panel(), registry_, BoardReader({board_})};
    StatusLineAnswers ownWords_{window_.statusLine()};
    AnswerSinks answers_{presenter_.record(), ownWords_};
    LoopbackService service_;
    CommandService commands_{log_, {.port = service_.port(), .connectSeconds = 5, .readSeconds = 5}, &answers_};
    KestravDevice engine_{registry_, volumes_, disks_, commands_, std::cout};
};

/// What the service says to the unmounting and then to the write; nothing at all where that is empty.
LoopbackBehaviour inTurn(std::string ofWrite) {
    const auto turn = std::make_shared<std::atomic<int>>(0);
    return [=](LoopbackConnection& connection) {
        if ((*turn)++ == 0) return answers("sdzz1 was not mounted.")(connection);
        if (!ofWrite.empty()) answers(ofWrite)(connection);
    };
}

TEST_F(Presented, SaysThatTheImageArrived) {
    plugIn();
    service_.setBehaviour(inTurn("Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s."));
    update();
    EXPECT_EQ(words(), "The firmware is on the accessory, read back and equal. You may unplug it.");
    EXPECT_EQ(window_.statusLine().toPlainText(), "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.");
    EXPECT_FALSE(again().isVisible());
}

TEST_F(Presented, DoesNotTakeSilenceAfterTheUnmountingForASuccess) {
    plugIn();
    service_.setBehaviour(inTurn(""));
    update();
    EXPECT_TRUE(comes("Nobody knows: the service gave no answer.")) << words().toStdString();
    EXPECT_TRUE(again().isVisible());
}

TEST_F(Presented, SaysThatTheServiceDoesNotRun) {
    plugIn();
    CommandService nobody(log_, {.port = 1, .connectSeconds = 5}, &answers_);
    KestravDevice engine(registry_, volumes_, disks_, nobody, std::cout);
    presenter_.updateBegins(button_, image_);
    window_.whileBusy([&] { engine.firmwareUpdate(image_); });
    presenter_.updateEnded(button_, image_);
    EXPECT_TRUE(words().contains("Not written: the service is not running.")) << words().toStdString();
}

TEST_F(Presented, SaysThatNothingWasHandedOver) {
    update();
    EXPECT_TRUE(words().contains("no accessory is plugged in")) << words().toStdString();
    EXPECT_FALSE(again().isVisible());
    devices_.breakDown();
    update();
    EXPECT_TRUE(words().contains("doesn't tell which devices")) << words().toStdString();
    std::ofstream(image_, std::ios::trunc).close();
    update();
    EXPECT_TRUE(words().contains("the image is empty")) << words().toStdString();
}

TEST_F(Presented, WaitsForTheAccessoryAndThenOffersToSendAgain) {
    plugIn();
    std::vector<std::string> sent;
    presenter_.setSendAgain([&](const Button& sender, const std::string& path) {
        EXPECT_EQ(&sender, &button_);
        sent.push_back(path);
    });
    service_.setBehaviour([this, turn = inTurn("Failed: the disk sdzz did not confirm that it kept the bytes.")](
                              LoopbackConnection& connection) {
        devices_.unplugAll();
        turn(connection);
    });
    update();
    EXPECT_TRUE(words().contains("the accessory was unplugged in the middle")) << words().toStdString();
    EXPECT_FALSE(again().isVisible());
    presenter_.takeAccessories(std::vector{UsbDevice{.id = 2, .name = "Accessory", .disk = std::nullopt}});
    EXPECT_FALSE(again().isVisible()) << "it has no disk yet";
    presenter_.takeAccessories(std::vector{UsbDevice{.id = 2, .name = "Accessory", .disk = "sdc"}});
    EXPECT_TRUE(again().isVisible());
    again().click();
    EXPECT_EQ(sent, std::vector{image_});
}

TEST_F(Presented, ShowsHowFarItIsByTheBoard) {
    plugIn();
    QStringList seen;
    const auto note = [&] { seen += words(); };
    QTimer often;
    QObject::connect(&often, &QTimer::timeout, note);
    often.start(1);
    std::atomic<bool> isSeen = false;
    service_.setBehaviour([&, first = std::make_shared<std::atomic<bool>>(true)](LoopbackConnection& connection) {
        if (first->exchange(false)) return answers("sdzz1 was not mounted.")(connection);
        post("writing");
        for (int look = 0; look < 600 && !isSeen; ++look)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        answers("Refused: no.")(connection);
    });
    QTimer sees;
    QObject::connect(&sees, &QTimer::timeout,
                     [&] { isSeen = isSeen || words().contains("50 %, 500 bytes of 1.0 kB"); });
    sees.start(5);
    update();
    EXPECT_TRUE(isSeen);
    EXPECT_TRUE(seen.join('\n').contains("Don't unplug the accessory."));
}

TEST_F(Presented, FollowsTheBoardPastALostAnswer) {
    plugIn();
    // What is there before the write is asked for is of another one.
    service_.setBehaviour([this, first = std::make_shared<std::atomic<bool>>(true)](LoopbackConnection& connection) {
        if (first->exchange(false)) return answers("sdzz1 was not mounted.")(connection);
        post("writing");
    });
    update();
    EXPECT_TRUE(comes("the service goes on")) << words().toStdString();
    EXPECT_TRUE(window_.findChild<QPushButton*>("firmwareBtn")->isEnabled());
    post("done", R"(,"verdict":"wrote")");
    EXPECT_TRUE(comes("The image is on the accessory")) << words().toStdString();
}

TEST_F(Presented, LeavesTheBoardForTheNextUpdate) {
    plugIn();
    service_.setBehaviour([this, first = std::make_shared<std::atomic<bool>>(true)](LoopbackConnection& connection) {
        if (first->exchange(false)) return answers("sdzz1 was not mounted.")(connection);
        post("writing");
    });
    update();
    EXPECT_TRUE(comes("the service goes on")) << words().toStdString();
    service_.setBehaviour(inTurn("Refused: the disk sdzz is in use by kestrav-commandd."));
    update();
    EXPECT_TRUE(words().contains("Not written: the service refused.")) << words().toStdString();
}

}  // namespace
}  // namespace kestrav
