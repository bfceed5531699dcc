#include "app/qt/SupportText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QSysInfo>
#include <utility>

namespace kestrav {
namespace {

// The doctor has about fifteen findings of a line or two.
constexpr qsizetype kMostBytes = 65'536;

constexpr const char* kProgram = "Kestrav " KESTRAV_VERSION;

QString about() {
    const QStringList parts{kProgram, QStringLiteral("Qt ") + qVersion(), QSysInfo::prettyProductName(),
                            "Linux " + QSysInfo::kernelVersion(), QLocale().name()};
    return parts.join(QStringLiteral(", "));
}

}  // namespace

SupportText::SupportText(QObject* parent, QString doctor, std::chrono::milliseconds patience)
    : QObject(parent),
      doctor_(std::move(doctor)) {
    process_.setProcessChannelMode(QProcess::MergedChannels);
    patience_.setSingleShot(true);
    patience_.setInterval(patience);
    connect(&process_, &QProcess::finished, this, [this] { finish({}); });
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) finish(QStringLiteral("kestravctl is not installed, or does not start."));
    });
    connect(&patience_, &QTimer::timeout, this, [this] { finish(QStringLiteral("It did not come to an end.")); });
}

SupportText::~SupportText() {
    // What it would still say is for nobody.
    disconnect(&process_, nullptr, this, nullptr);
    endDoctor();
}

/// The one of the same installation or build.
QString SupportText::ownDoctor() {
    const QFileInfo beside(QCoreApplication::applicationDirPath() + QStringLiteral("/kestravctl"));
    return beside.isExecutable() ? beside.filePath() : QStandardPaths::findExecutable(QStringLiteral("kestravctl"));
}

void SupportText::gather(const QString& shown, const std::string& record, Ready ready) {
    if (ready_) return;
    beginning_ = about() + "\n\n" + shown + QStringLiteral("\n\nWhat happened:\n") + QString::fromStdString(record) +
                 QStringLiteral("\nkestravctl doctor:\n");
    ready_ = std::move(ready);
    patience_.start();
    process_.start(doctor_, {QStringLiteral("doctor")}, QIODevice::ReadOnly);
}

void SupportText::finish(const QString& problem) {
    if (!ready_) return;
    patience_.stop();
    QString found = process_.isReadable() ? QString::fromUtf8(process_.read(kMostBytes)) : QString();
    if (!problem.isEmpty()) found += problem + '\n';
    const Ready ready = std::exchange(ready_, nullptr);
    endDoctor();
    ready(std::exchange(beginning_, {}) + found);
}

void SupportText::endDoctor() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.kill();
    process_.waitForFinished();
}

}  // namespace kestrav
