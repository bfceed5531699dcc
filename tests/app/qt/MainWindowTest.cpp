#include <QCloseEvent>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QThread>
#include <QTimer>
#include <QToolButton>
#include <algorithm>
#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/LogText.h"
#include "app/ViewController.h"
#include "app/qt/InputBlocker.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/MainWindow.h"
#include "app/qt/StatusLine.h"
#include "app/qt/StatusLineAnswers.h"
#include "app/qt/prefersStillness.h"
#include "command/CommandService.h"
#include "command/HelperInstallation.h"
#include "device/KestravDevice.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/command/fakes/FakeAuthorization.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeRegistry.h"
#include "tests/device/fakes/FakeVolumes.h"

namespace kestrav {
namespace {

/// The real window and the real controller; what is outside of the process is held in memory.
class Window : public ::testing::Test {
  public:
    ~Window() override { controller_->driver()->setParent(nullptr); }

  protected:
    Window() {
        window_.connectTo(*controller_);
        controller_->viewDidLoad();
    }

    QPushButton& firmwareButton() { return *window_.findChild<QPushButton*>("firmwareBtn"); }
    QPushButton& iconButton() { return *window_.findChild<QPushButton*>("iconBtn"); }
    LogTextEdit& logEdit() {
        const auto texts = window_.findChildren<QPlainTextEdit*>();
        const auto isLog = [](const QPlainTextEdit* text) { return dynamic_cast<const LogTextEdit*>(text) != nullptr; };
        return *dynamic_cast<LogTextEdit*>(*std::ranges::find_if(texts, isLog));
    }
    QProgressBar& bar() { return *window_.findChild<QProgressBar*>(); }

    /// Does `action` on the main thread while the window is busy, then lets the rest of the queue through.
    void whileBusyDo(const std::function<void()>& action) {
        window_.whileBusy([&] { QMetaObject::invokeMethod(&window_, action, Qt::BlockingQueuedConnection); });
        QCoreApplication::processEvents();
    }

    MainWindow window_;
    FakeRegistry registry_;
    FakeVolumes volumes_;
    FakeDisks disks_;
    RecordingLog systemLog_;
    StatusLineAnswers answers_{window_.statusLine()};
    LoopbackService service_;
    CommandService commands_{systemLog_, {.port = service_.port()}, &answers_};
    FakeAuthorization authorization_;
    HelperInstallation installation_{authorization_, systemLog_};
    std::shared_ptr<ViewController> controller_ = std::make_shared<ViewController>(
        window_, EngineParts{registry_, volumes_, disks_, commands_}, installation_, std::cout);
};

TEST_F(Window, HasItsPreferredSize) {
    EXPECT_EQ(window_.size(), QSize(480, 270));
}

TEST_F(Window, GivesTheControllerItsParts) {
    EXPECT_NE(controller_->logBox(), nullptr);
    EXPECT_NE(controller_->logText(), nullptr);
    EXPECT_EQ(controller_->processFirmwareBtn()->identifier(), "firmwareBtn");
    EXPECT_EQ(controller_->processIconBtn()->identifier(), "iconBtn");
    EXPECT_NE(controller_->loaderBar(), nullptr);
}

TEST_F(Window, NamesEverythingForAScreenReader) {
    for (const QWidget* widget : {static_cast<QWidget*>(&logEdit()), static_cast<QWidget*>(&window_.statusLine()),
                                  static_cast<QWidget*>(&bar())}) {
        EXPECT_FALSE(widget->accessibleName().isEmpty());
    }
    EXPECT_TRUE(firmwareButton().text().contains('&'));
    EXPECT_TRUE(iconButton().text().contains('&'));
}

TEST_F(Window, IsReachedWithTheTabKeyInItsOrder) {
    window_.statusLine().showSentence("Refused: no.");
    const std::vector<const QWidget*> order{
        &firmwareButton(), &iconButton(), &window_.statusLine(), &logEdit(), window_.findChild<QToolButton*>("helpBtn"),
        &firmwareButton()};
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    for (const QWidget* expected : order) {
        EXPECT_EQ(QApplication::focusWidget(), expected);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
}

TEST_F(Window, ClosesOnlyWhenItMay) {
    bool may = false;
    window_.setMayClose([&] { return may; });
    EXPECT_FALSE(window_.close());
    EXPECT_TRUE(window_.isVisible());
    may = true;
    EXPECT_TRUE(window_.close());
}

TEST_F(Window, SaysOnceThatItCanBeSeen) {
    int seen = 0;
    MainWindow other;
    other.setOnceVisible([&] { ++seen; });
    EXPECT_EQ(seen, 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return seen > 0; }));
    other.repaint();
    QTest::qWait(20);
    EXPECT_EQ(seen, 1);
}

TEST_F(Window, RunsABusyTaskOnAnotherThreadAndComesBackWhenItIsDone) {
    const QThread* worker = nullptr;
    window_.whileBusy([&] { worker = QThread::currentThread(); });
    EXPECT_NE(worker, nullptr);
    EXPECT_NE(worker, QThread::currentThread());
}

TEST_F(Window, ShowsItsButtonsAsDisabledWhileBusyAndGivesTheFocusBack) {
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    ASSERT_TRUE(firmwareButton().hasFocus());
    whileBusyDo([&] {
        EXPECT_FALSE(firmwareButton().isEnabled());
        EXPECT_FALSE(iconButton().isEnabled());
        EXPECT_TRUE(logEdit().isEnabled());
    });
    EXPECT_TRUE(firmwareButton().isEnabled());
    EXPECT_TRUE(iconButton().isEnabled());
    EXPECT_TRUE(firmwareButton().hasFocus());
}

TEST_F(Window, LeavesAButtonDisabledThatWasSoBeforeItGotBusy) {
    controller_->processIconBtn()->setEnabled(false);
    window_.whileBusy([] {});
    EXPECT_TRUE(firmwareButton().isEnabled());
    EXPECT_FALSE(iconButton().isEnabled());
}

TEST_F(Window, PassesOnWhatABusyTaskThrows) {
    EXPECT_THROW(window_.whileBusy([] { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(Window, TurnsItsEventLoopWhileBusy) {
    std::atomic<int> ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    window_.whileBusy([&] {
        for (int waited = 0; ticks < 5 && waited < 20000; ++waited) {
            QThread::msleep(1);
        }
        EXPECT_GE(ticks, 5);
    });
}

TEST_F(Window, TakesNoClickAndNoKeyWhileBusyNorAfterwards) {
    QPushButton probe("Probe", &window_);
    probe.show();
    int pressed = 0;
    QObject::connect(&probe, &QPushButton::clicked, [&] { ++pressed; });
    whileBusyDo([&] {
        QTest::mouseClick(&probe, Qt::LeftButton);
        QTest::keyClick(&probe, Qt::Key_Space);
        QTest::mouseClick(window_.windowHandle(), Qt::LeftButton, {}, probe.geometry().center());
    });
    EXPECT_EQ(pressed, 0);
    QTest::mouseClick(&probe, Qt::LeftButton);
    EXPECT_EQ(pressed, 1);
}

TEST_F(Window, KeepsNoInputThatIsStillOnItsWayWhenTheTaskEnds) {
    QPushButton probe("Probe", &window_);
    probe.setGeometry(0, 0, 100, 100);
    probe.show();
    int pressed = 0;
    QObject::connect(&probe, &QPushButton::clicked, [&] { ++pressed; });
    window_.whileBusy([&] {
        // From this thread input is only queued, as a click is that arrives in the last moment.
        QMetaObject::invokeMethod(
            &window_,
            [&] {
                QCoreApplication::postEvent(&probe, new QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier));
                QCoreApplication::postEvent(&probe, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier));
            },
            Qt::BlockingQueuedConnection);
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(pressed, 0);
}

TEST_F(Window, TakesWhatIsStillOnItsWayAwayWithTheBlocker) {
    QPushButton probe("Probe", &window_);
    probe.show();
    int pressed = 0;
    QObject::connect(&probe, &QPushButton::clicked, [&] { ++pressed; });
    {
        const InputBlocker blocker;
        QCoreApplication::postEvent(&probe, new QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier));
        QCoreApplication::postEvent(&probe, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier));
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(pressed, 0);
}

TEST_F(Window, StaysOpenWhileBusy) {
    int asked = 0;
    window_.setMayClose([&] {
        ++asked;
        return true;
    });
    bool accepted = true;
    whileBusyDo([&] {
        QCloseEvent event;
        QCoreApplication::sendEvent(&window_, &event);
        accepted = event.isAccepted();
        window_.close();
    });
    EXPECT_FALSE(accepted);
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(window_.isVisible());
}

TEST_F(Window, ShowsEachLineBeforeTheTaskGoesOn) {
    std::vector<std::string> seen;
    window_.whileBusy([&] {
        for (const char* line : {"a", "b"}) {
            controller_->log(line);
            seen.push_back(logEdit().toPlainText().toStdString());
        }
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"a\n", "a\nb\n"}));
}

/// Counts how often a widget was painted, and keeps how many lines the log had the last time.
class PaintCounter final : public QObject {
  public:
    explicit PaintCounter(QWidget& widget, const LogTextEdit* log = nullptr) : log_(log) {
        widget.installEventFilter(this);
    }
    std::atomic<int> count = 0;
    std::atomic<int> lines = 0;

  protected:
    bool eventFilter(QObject* /*receiver*/, QEvent* event) override {
        if (event->type() != QEvent::Paint) return false;
        ++count;
        if (log_ != nullptr) lines = log_->blockCount() - 1;
        return false;
    }

  private:
    const LogTextEdit* log_;
};

TEST_F(Window, PaintsLinesTogetherThatComeFasterThanAScreenChanges) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    QElapsedTimer clock;
    clock.start();
    window_.whileBusy([&] {
        for (int line = 0; line < 3000; ++line) {
            controller_->log("line");
        }
    });
    EXPECT_LE(counter.count, clock.elapsed() / 16 + 2);
    EXPECT_EQ(logEdit().blockCount(), 3001);
}

TEST_F(Window, PaintsTheLastLineWhileTheTaskWaits) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    window_.whileBusy([&] {
        for (int line = 0; line < 20; ++line) {
            controller_->log("line");
        }
        for (QDeadlineTimer limit(20000); counter.lines < 20 && !limit.hasExpired();) {
            std::this_thread::yield();
        }
        EXPECT_EQ(counter.lines, 20);
    });
}

TEST_F(Window, PaintsTheNewestLineBeforeScrollingToItReturns) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    const int before = counter.count;
    controller_->logText()->scrollToEndOfDocument();
    EXPECT_GT(counter.count, before);
}

TEST_F(Window, TakesALateLineAsFastAsAnEarlyOne) {
    window_.hide();
    const std::string line = "Loaded icon file: /home/somebody/firmware.fds with 200000 bytes.";
    // The processor's time and not the clock's: other programs are none of the log's business.
    const auto costOf = [&](int lines) {
        const std::clock_t begin = std::clock();
        for (int number = 0; number < lines; ++number) {
            controller_->log(line);
        }
        return std::clock() - begin;
    };
    std::clock_t early = 0;
    std::clock_t late = 0;
    window_.whileBusy([&] {
        early = costOf(2000);
        std::string many;
        for (int number = 0; number < 96000; ++number) {
            many += line + "\r\n";
        }
        ASSERT_TRUE(controller_->logText()->append(many));
        late = costOf(2000);
    });
    EXPECT_EQ(logEdit().document()->blockCount(), 100001);
    EXPECT_LT(late, 4 * early);
}

TEST_F(Window, StopsTakingLinesWhenTheLogIsGone) {
    const std::shared_ptr<LogText> text = controller_->logText();
    EXPECT_EQ(text->string(), "");
    delete &logEdit();
    EXPECT_EQ(text->string(), std::nullopt);
    EXPECT_FALSE(text->append("a"));
    text->scrollToEndOfDocument();
}

TEST_F(Window, ShowsTheIndicatorForTheLengthOfTheWork) {
    EXPECT_FALSE(bar().isVisible());
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    EXPECT_TRUE(bar().isVisible());
    EXPECT_EQ(bar().maximum(), 0);
    controller_->loaderBar()->stopAnimation(*controller_->processIconBtn());
    EXPECT_FALSE(bar().isVisible());
}

TEST_F(Window, MovesTheIndicatorWhileItIsShown) {
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    const QImage before = bar().grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().grab().toImage() != before; }));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    // Taking a picture paints, too; nothing else may be needed for the bar to do so.
    PaintCounter counter(bar());
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter.count > 3; }));
}

/// A style for people whom motion makes ill.
class StillStyle final : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
    }
};

TEST_F(Window, KeepsTheIndicatorStillForWhoeverWantsThat) {
    StillStyle still;
    bar().setStyle(&still);
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    EXPECT_TRUE(bar().isVisible());
    const QImage before = bar().grab().toImage();
    PaintCounter counter(bar());
    QTest::qWait(400);
    EXPECT_LE(counter.count, 1);
    EXPECT_EQ(bar().grab().toImage(), before);
    bar().setStyle(nullptr);
}

TEST_F(Window, KeepsTheIndicatorStillWhereTheDesktopsSettingsSaySo) {
    const QString settings = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/kdeglobals";
    EXPECT_FALSE(prefersStillness(bar()));
    std::ofstream(settings.toStdString()) << "[KDE]\nAnimationDurationFactor=0\n";
    EXPECT_TRUE(prefersStillness(bar()));
    std::filesystem::remove(settings.toStdString());
}

TEST_F(Window, ShowsTheNewestAnswerFromAnyThread) {
    answers_.answered("first");
    window_.whileBusy([&] { answers_.answered("second <b>%s\n\x1b"); });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "second <b>%s\\x0a\\x1b");
}

TEST_F(Window, ShowsWhatTheServiceAnswersAndTheLogHas) {
    service_.setBehaviour(answers("first"));
    commands_.runWithCommand("umount", {});
    service_.setBehaviour(answers("second <b>%s\n\x1b"));
    window_.whileBusy([&] { commands_.runWithCommand("umount", {}); });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "second <b>%s\\x0a\\x1b");
    EXPECT_EQ(systemLog_.entries(), (std::vector<std::string>{"first", "second <b>%s\n\x1b"}));
}

TEST_F(Window, ShowsWhyTheServiceGaveNoAnswer) {
    CommandService unreachable(systemLog_, {.address = "256.256.256.256"}, &answers_);
    window_.whileBusy([&] { unreachable.runWithCommand("umount", {}); });
    QCoreApplication::processEvents();
    ASSERT_EQ(systemLog_.entries().size(), 1U);
    EXPECT_EQ(window_.statusLine().toPlainText().toStdString(), systemLog_.entries()[0]);
}

TEST_F(Window, KeepsItsMessageWhereTheLogHasNone) {
    window_.whileBusy([&] {
        answers_.answered("sdb1 was not mounted.");
        answers_.answered("\xff");
        answers_.unanswered({Unanswered::Why::noReplyInTime, ""});
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "sdb1 was not mounted.");
}

TEST_F(Window, ShowsNoMessageOfAnEarlierTask) {
    answers_.answered("Wrote 200000 bytes to sdb at block 1536, verified, 12.3 MB/s.");
    window_.whileBusy([] {});
    EXPECT_EQ(window_.statusLine().toPlainText(), "");
    window_.whileBusy([&] { answers_.answered("Refused: not this time."); });
    EXPECT_EQ(window_.statusLine().toPlainText(), "Refused: not this time.");
}

TEST_F(Window, ShowsTwoLinesOfAMessageWithoutAScrollBar) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    answers_.answered(
        "Refused: the image has 16777216 bytes, but sdzz has room for 15990784 from block 1536 on. Nothing.");
    QCoreApplication::processEvents();
    EXPECT_GE(window_.statusLine().document()->firstBlock().layout()->lineCount(), 2);
    EXPECT_FALSE(window_.statusLine().verticalScrollBar()->isVisible());
}

TEST_F(Window, OutlivesNoMessageBadly) {
    std::optional<StatusLineAnswers> answers;
    auto line = std::make_unique<StatusLine>();
    answers.emplace(*line);
    CommandService commands(systemLog_, {.port = service_.port()}, &*answers);
    service_.setBehaviour(kestrav::answers("on its way"));
    std::thread([&] { commands.runWithCommand("umount", {}); }).join();
    EXPECT_EQ(line->toPlainText(), "") << "shown before the event loop had its turn";
    line.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(systemLog_.entries().back(), "on its way");
}

}  // namespace
}  // namespace kestrav
