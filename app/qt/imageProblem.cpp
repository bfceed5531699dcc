#include "app/qt/imageProblem.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"
#include "base/shownText.h"
#include "base/systemWords.h"

namespace kestrav {
namespace {

struct ImageProblem {
    Q_DECLARE_TR_FUNCTIONS(ImageProblem)
};

/// What stands there in place of an ordinary file; empty for one.
QString whatItIsInstead(mode_t mode) {
    if (S_ISREG(mode)) return {};
    if (S_ISDIR(mode)) return ImageProblem::tr("%1 is a folder. Choose the file in it that holds the image.");
    if (S_ISFIFO(mode)) return ImageProblem::tr("%1 is a pipe. Choose a file that holds the image.");
    if (S_ISSOCK(mode)) return ImageProblem::tr("%1 is a socket. Choose a file that holds the image.");
    return ImageProblem::tr("%1 is a device. Choose a file that holds the image.");
}

QString cannotBeRead(const QString& name, int error) {
    return ImageProblem::tr("%1 can't be read: %2. Check your rights to it, or choose another file.")
        .arg(name, QString::fromStdString(systemWords(error)));
}

}  // namespace

QString imageProblem(const QString& path) {
    const QString name = QString::fromStdString(escapedForTerminal(QFileInfo(path).fileName().toStdString()));
    const QByteArray encoded = QFile::encodeName(path);
    struct stat status = {};
    // Looked at first: opening a socket fails with words that nobody understands, and opening a device may do
    // something.
    if (::stat(encoded.constData(), &status) != 0) return cannotBeRead(name, errno);
    if (const QString instead = whatItIsInstead(status.st_mode); !instead.isEmpty()) return instead.arg(name);
    // O_NONBLOCK: a pipe may have taken its place meanwhile.
    const UniqueFd file(::open(encoded.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    char first = 0;
    const bool readable = file && retry([&] { return ::pread(file.get(), &first, 1, 0); }) >= 0;
    return readable ? QString() : cannotBeRead(name, errno);
}

}  // namespace kestrav
