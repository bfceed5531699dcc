#include <QApplication>
#include <QStandardPaths>
#include <cstdlib>
#include <fontconfig/fontconfig.h>
#include <iostream>
#include <malloc.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <thread>

#include "app/AnswerSinks.h"
#include "app/AppDelegate.h"
#include "app/BothUpdateObservers.h"
#include "app/LastWords.h"
#include "app/SupportRecord.h"
#include "app/ViewController.h"
#include "app/qt/AccessoryLine.h"
#include "app/qt/AccessoryWatch.h"
#include "app/qt/DisplayCheck.h"
#include "app/qt/MainWindow.h"
#include "app/qt/MessageBoxes.h"
#include "app/qt/OneInstance.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/ProgramResources.h"
#include "app/qt/SecondClickFilter.h"
#include "app/qt/StatusLine.h"
#include "app/qt/StatusLineAnswers.h"
#include "app/qt/UpdatePresenter.h"
#include "app/qt/announceEnd.h"
#include "app/qt/installTranslations.h"
#include "app/qt/programIcon.h"
#include "app/qt/showLastWords.h"
#include "base/SystemLog.h"
#include "command/CommandService.h"
#include "command/HelperInstallation.h"
#include "command/linux/PolkitAuthorization.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"
#include "device/linux/UdevEvents.h"
#include "protocol/names.h"

namespace kestrav {
namespace {

/// What the desktop has to know of the program, and in which language and direction to speak.
void introduce() {
    QCoreApplication::setApplicationName(QStringLiteral("kestrav"));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(kApplicationName));
    QGuiApplication::setLayoutDirection(QLocale().textDirection());
    installTranslations();
}

/// Has the window manager and the messages show the program's icon.
void showIcon() {
    QGuiApplication::setWindowIcon(programIcon());
}

/// The parts of the program, each made of those above it.
class Program {
  public:
    Program(LastWords& lastWords, const OneInstance& instance)
        : lastWords_(lastWords),
          window_([&instance] { return !instance.hasRaisedAnother(); }) {
        connectUpdates();
        connectLife();
    }
    ~Program() { controller_->driver()->setParent(nullptr); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void bringToFront() { window_.bringToFront(); }

  private:
    void connectUpdates() {
        window_.connectTo(*controller_);
        controller_->setObserver(&observers_);
        controller_->viewDidLoad();
        presenter_.setFound([this] { return controller_->driver()->device; });
        presenter_.setSendAgain([this](const Button& sender, const std::string& path) {
            window_.preselect(path);
            controller_->browseFile(sender);
        });
        presenter_.setEnded([this](const Report& report) { announceEnd(window_, report); });
        presenter_.setLookAgain([this] { accessories_.look(); });
    }

    void connectLife() {
        window_.setMayClose([this] { return delegate_.applicationShouldTerminate() == TerminateReply::now; });
        QGuiApplication::setQuitOnLastWindowClosed(delegate_.applicationShouldTerminateAfterLastWindowClosed());
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                         [this] { delegate_.applicationWillTerminate(); });
        window_.setClosedWhileAsking([this] { endWhileAsking(); });
        window_.setOnceVisible([this] { beginAfterTheFirstPicture(); });
    }

    /// Whatever the person need not wait for to see the window.
    void beginAfterTheFirstPicture() {
        lastWords_.begin([](const LastScene& scene) { scene.handOver(); });
        showIcon();
        accessories_.begin();
        window_.panel().showAsking();
        delegate_.applicationDidFinishLaunching();
        // It doesn't return from a failure.
        window_.panel().showReady();
    }

    void endWhileAsking() {
        authorization_.giveUp();
        delegate_.applicationWillTerminate();
        std::cout.flush();
        lastWords_.endsOnPurpose();
        // The thread that waits for the person's answer has nothing left to do, and must not run into what is torn
        // down.
        std::_Exit(0);
    }

    LastWords& lastWords_;
    const ProgramResources resources_;
    const SecondClickFilter secondClicks_;
    MainWindow window_;
    SyslogSystemLog log_{"kestrav"};
    MessageBoxes alerts_{window_};

    UdevDeviceRegistry udev_;
    WatchedRegistry registry_{udev_};
    UpdatePresenter presenter_{window_.panel(), registry_};
    StatusLineAnswers ownWords_{window_.statusLine()};
    AnswerSinks answers_{lastWords_, presenter_.record(), ownWords_, window_.supportRecord()};
    BothUpdateObservers observers_{lastWords_, presenter_};
    UdevEvents events_;
    AccessoryWatch accessories_{udev_, events_, [this](const AccessoryWatch::Accessories& attached) {
                                    window_.accessoryLine().showAccessories(attached);
                                    presenter_.takeAccessories(attached);
                                }};
    MountinfoVolumes volumes_;
    PosixDiskCalls disks_;
    CommandService commands_{log_, {}, &answers_};
    PolkitAuthorization authorization_{KESTRAV_LIBEXEC "/kestrav-bless"};
    HelperInstallation installation_{authorization_, log_};
    std::shared_ptr<ViewController> controller_ = std::make_shared<ViewController>(
        window_, EngineParts{registry_, volumes_, disks_, commands_}, installation_, std::cout);
    AppDelegate delegate_{{installation_, window_, alerts_, resources_, log_,
                           QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation).toStdString(),
                           std::cout}};
};

int run(LastWords& lastWords) {
    introduce();
    OneInstance instance;
    Program program(lastWords, instance);
    if (instance.hasRaisedAnother()) return 0;
    instance.setRaise([&] { program.bringToFront(); });
    return QApplication::exec();
}

/// In the place of the process that has outlived another window.
int tellLastWords(int argc, char* argv[], const LastScene& scene) {
    // Executed, it has lost its name.
    ::prctl(PR_SET_NAME, LastWords::kProcessName);
    const DisplayCheck check;
    const QApplication application(argc, argv);
    introduce();
    showIcon();
    showLastWords(scene);
    return 0;
}

}  // namespace
}  // namespace kestrav

int main(int argc, char* argv[]) {
    if (const auto scene = kestrav::LastScene::handedOver({argv, static_cast<std::size_t>(argc)})) {
        return kestrav::tellLastWords(argc, argv, *scene);
    }
    // The threads here do little at the same time, and a thread's memory of its own is kept when the thread has gone.
    // With one beside the main thread's, the fonts' configuration and the toolkit don't wait for each other.
    ::mallopt(M_ARENA_MAX, 2);
    // Static, for its end is heard at std::exit(), too.
    static kestrav::LastWords lastWords;
    // Reading the fonts' configuration is a third of the work until the window is there, and needs nothing of the
    // toolkit: it is done while the toolkit waits for the display.
    std::thread fonts([] { FcInit(); });
    std::optional<kestrav::DisplayCheck> check(std::in_place);
    const QApplication application(argc, argv);
    check.reset();
    fonts.join();
    return kestrav::run(lastWords);
}
