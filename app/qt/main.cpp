#include <QApplication>
#include <QIcon>
#include <QStandardPaths>
#include <cstdlib>
#include <fontconfig/fontconfig.h>
#include <iostream>
#include <optional>
#include <thread>

#include "app/AppDelegate.h"
#include "app/BothAnswerSinks.h"
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
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/kestrav-64.png")));
    QGuiApplication::setLayoutDirection(QLocale().textDirection());
    installTranslations();
}

int run(QApplication& application, LastWords& lastWords) {
    introduce();
    OneInstance instance;
    if (instance.hasRaisedAnother()) return 0;
    const ProgramResources resources;
    const SecondClickFilter secondClicks;
    MainWindow window;
    instance.setRaise([&] { window.bringToFront(); });
    SyslogSystemLog log("kestrav");
    MessageBoxes alerts(window);

    UdevDeviceRegistry udev;
    WatchedRegistry registry(udev);
    UpdatePresenter presenter(window.panel(), registry);
    StatusLineAnswers ownWords(window.statusLine());
    BothAnswerSinks shown(presenter.record(), ownWords);
    BothAnswerSinks kept(shown, window.supportRecord());
    BothAnswerSinks answers(lastWords, kept);
    UdevEvents events;
    AccessoryWatch accessories(udev, events, [&](const AccessoryWatch::Accessories& attached) {
        window.accessoryLine().showAccessories(attached);
        presenter.takeAccessories(attached);
    });
    MountinfoVolumes volumes;
    PosixDiskCalls disks;
    CommandService commands(log, {}, &answers);
    PolkitAuthorization authorization(KESTRAV_LIBEXEC "/kestrav-bless");
    HelperInstallation installation(authorization, log);

    const auto controller = std::make_shared<ViewController>(window, EngineParts{registry, volumes, disks, commands},
                                                             installation, std::cout);
    window.connectTo(*controller);
    BothUpdateObservers observers(lastWords, presenter);
    controller->setObserver(&observers);
    controller->viewDidLoad();
    presenter.setFound([&] { return controller->driver()->device; });
    presenter.setSendAgain([&](const Button& sender, const std::string& path) {
        window.preselect(path);
        controller->browseFile(sender);
    });
    presenter.setEnded([&](const Report& report) { announceEnd(window, report); });
    presenter.setLookAgain([&] { accessories.look(); });

    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    AppDelegate delegate({installation, window, alerts, resources, log, data.toStdString(), std::cout});
    window.setMayClose([&] { return delegate.applicationShouldTerminate() == TerminateReply::now; });
    QGuiApplication::setQuitOnLastWindowClosed(delegate.applicationShouldTerminateAfterLastWindowClosed());
    QObject::connect(&application, &QCoreApplication::aboutToQuit, [&] { delegate.applicationWillTerminate(); });

    window.setClosedWhileAsking([&] {
        authorization.giveUp();
        delegate.applicationWillTerminate();
        std::cout.flush();
        lastWords.endsOnPurpose();
        // The thread that waits for the person's answer has nothing left to do, and must not run into what is torn
        // down.
        std::_Exit(0);
    });

    window.setOnceVisible([&] {
        window.panel().showAsking();
        delegate.applicationDidFinishLaunching();
        // It doesn't return from a failure.
        window.panel().showReady();
    });
    const int status = QApplication::exec();
    controller->driver()->setParent(nullptr);
    return status;
}

}  // namespace
}  // namespace kestrav

int main(int argc, char* argv[]) {
    // Static, for its end is heard at std::exit(), too; first, for threads don't get along with a second process.
    static kestrav::LastWords lastWords([&](const kestrav::LastScene& scene) {
        const kestrav::DisplayCheck check;
        const QApplication application(argc, argv);
        kestrav::introduce();
        kestrav::showLastWords(scene);
    });
    // Reading the fonts' configuration is a third of the work until the window is there, and needs nothing of the
    // toolkit: it is done while the toolkit waits for the display.
    std::thread fonts([] { FcInit(); });
    std::optional<kestrav::DisplayCheck> check(std::in_place);
    QApplication application(argc, argv);
    check.reset();
    fonts.join();
    return kestrav::run(application, lastWords);
}
