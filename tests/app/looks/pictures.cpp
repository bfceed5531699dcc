// Pictures of the window, one for each thing that it can say: pictures FOLDER [dark|contrast]
// The language comes from LANG, the scale from QT_SCALE_FACTOR; the screen is memory, so that nothing else shines in.

#include <QApplication>
#include <QGuiApplication>
#include <QLocale>
#include <QPalette>
#include <QPixmap>
#include <QStringList>
#include <QStyleFactory>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "app/qt/AccessoryLine.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/StatusLine.h"
#include "app/qt/installTranslations.h"
#include "app/qt/progressSentence.h"
#include "app/reportOf.h"
#include "tests/app/everyEnding.h"
#include "tests/app/qt/logEditOf.h"

namespace kestrav {
namespace {

/// What the service has said before such an ending.
std::string sentenceOf(UpdateEnding ending) {
    switch (reportOf(ending).kind) {
        case Report::Kind::success:
            return "Wrote 62000000 bytes to sdb at block 1536, verified, 11.3 MB/s.";
        case Report::Kind::notWritten:
            return "Refused: the disk sdb is write-protected.";
        default:
            return "sdb1 was not mounted.";
    }
}

QPalette dark() {
    QPalette palette(QColor(53, 53, 53));
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    palette.setColor(QPalette::AlternateBase, QColor(53, 53, 53));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, Qt::white);
        palette.setColor(QPalette::Disabled, role, QColor(127, 127, 127));
    }
    palette.setColor(QPalette::PlaceholderText, QColor(160, 160, 160));
    palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
    return palette;
}

QPalette contrast() {
    QPalette palette(Qt::black, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText,
                            QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Highlight}) {
        palette.setColor(role, Qt::white);
    }
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::Base, Qt::black);
    return palette;
}

UsbDevice accessory(const std::string& disk) {
    UsbDevice device;
    device.name = "Kestrav Accessory";
    device.disk = disk;
    device.diskBytes = 64'000'000;
    device.serial = "0123456789AB";
    return device;
}

class Pictures {
  public:
    explicit Pictures(QString folder) : folder_(std::move(folder)) {
        LogTextEdit& log = logEditOf(window_);
        for (const char* line :
             {"Preparing to process firmware.", "Loaded icon file: /home/anna/accessory-2.1.fds with 62000000 bytes.",
              "Writing to device memory space.", "", "Finished writing to device.", "End firmware processing."}) {
            log.append(std::string(line) + "\r\n");
        }
    }

    bool all() {
        OutcomePanel& panel = window_.panel();
        panel.showReady();
        bool done = take("ready");
        window_.accessoryLine().showAccessories(std::vector{accessory("sdb")});
        panel.showAsking();
        done = take("asking") && done;
        const ProgressSentence half = progressSentence({"sdb", WritePhase::writing, 31'000'000, 62'000'000, 9'000'000});
        panel.showWorking(half.phase, half.share,
                          QCoreApplication::translate("UpdatePresenter", "Don't unplug the accessory."));
        done = take("working") && done;
        for (const UpdateEnding ending : kEveryEnding) {
            panel.showReport(reportOf(ending));
            panel.offerToSendAgain(true);
            panel.statusLine().showSentence(sentenceOf(ending));
            done = take(QStringLiteral("ending-%1").arg(static_cast<int>(ending), 2, 10, QChar('0'))) && done;
        }
        window_.accessoryLine().showAccessories(std::vector{accessory("sdb"), accessory("sdc")});
        window_.resize(1280, 720);
        return take("wide") && done;
    }

  private:
    bool take(const QString& name) {
        // A text that wraps asks for another height once it knows its width, and the layout follows a pass later.
        for (int pass = 0; pass < 4; ++pass)
            QApplication::processEvents();
        return window_.grab().save(folder_ + '/' + name + QStringLiteral(".png"));
    }

    QString folder_;
    MainWindow window_;
};

int run(const QStringList& arguments) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    if (arguments.value(2) == "dark") QApplication::setPalette(dark());
    if (arguments.value(2) == "contrast") QApplication::setPalette(contrast());
    QGuiApplication::setLayoutDirection(QLocale().textDirection());
    installTranslations();
    if (Pictures(arguments.value(1)).all()) return EXIT_SUCCESS;
    std::fprintf(stderr, "No picture could be written to %s.\n", arguments.value(1).toLocal8Bit().constData());
    return EXIT_FAILURE;
}

}  // namespace
}  // namespace kestrav

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (application.arguments().size() < 2) {
        std::fputs("usage: pictures FOLDER [dark|contrast]\n", stderr);
        return 2;
    }
    return kestrav::run(QApplication::arguments());
}
