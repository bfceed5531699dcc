#include <QCloseEvent>
#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QToolButton>
#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/qt/InputBlocker.h"
#include "tests/app/qt/WindowOnFakes.h"

namespace kestrav {
namespace {

/// What the window is made of, and what it does while it is busy.
class Window : public WindowOnFakes {};

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
    bool isLater = false;
    QTimer::singleShot(0, &other, [&] { isLater = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return isLater; }));
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

}  // namespace
}  // namespace kestrav
