#pragma once

#include <QCoreApplication>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>

#include "app/ViewController.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/MainWindow.h"
#include "app/qt/StatusLine.h"
#include "app/qt/StatusLineAnswers.h"
#include "command/CommandService.h"
#include "command/HelperInstallation.h"
#include "device/KestravDevice.h"
#include "tests/app/qt/logEditOf.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/command/fakes/FakeAuthorization.h"
#include "tests/device/fakes/FakeDisks.h"
#include "tests/device/fakes/FakeRegistry.h"
#include "tests/device/fakes/FakeVolumes.h"

namespace kestrav {

/// The real window and the real controller; what is outside of the process is held in memory.
class WindowOnFakes : public ::testing::Test {
  public:
    ~WindowOnFakes() override { controller_->driver()->setParent(nullptr); }

  protected:
    WindowOnFakes() {
        window_.connectTo(*controller_);
        controller_->viewDidLoad();
    }

    QPushButton& firmwareButton() { return *window_.findChild<QPushButton*>("firmwareBtn"); }
    QPushButton& iconButton() { return *window_.findChild<QPushButton*>("iconBtn"); }
    LogTextEdit& logEdit() { return logEditOf(window_); }
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

}  // namespace kestrav
