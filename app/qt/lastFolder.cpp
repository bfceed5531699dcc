#include "app/qt/lastFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <climits>
#include <span>
#include <string>

#include "base/StagedFile.h"
#include "base/wholeFile.h"
#include "protocol/names.h"

namespace kestrav {
namespace {

QString settingsFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + '/' + kApplicationName;
}

/// Holds the path and nothing else.
std::string settingsFile() {
    return (settingsFolder() + QStringLiteral("/last-folder")).toStdString();
}

}  // namespace

QString lastFolder() {
    const auto content = readWholeFile(settingsFile(), PATH_MAX);
    if (!content || content.value().find('\0') != std::string::npos) return {};
    const QString folder = QString::fromStdString(content.value());
    return QDir::isAbsolutePath(folder) && !folder.startsWith(':') && QFileInfo(folder).isDir() ? folder : QString();
}

void keepLastFolder(const QString& folder) {
    const std::string path = folder.toStdString();
    if (!QDir().mkpath(settingsFolder())) return;
    static_cast<void>(replaceFile(settingsFile(), std::as_bytes(std::span(path)), kOwnerAlone));
}

}  // namespace kestrav
