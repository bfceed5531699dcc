#include "app/qt/ProgramResources.h"

#include <QFile>

// The linker leaves a static library's resources out unless this macro names them. It can't be used in a namespace.
static void takeResourcesIn() {
    Q_INIT_RESOURCE(kestrav);
}

namespace kestrav {

ProgramResources::ProgramResources() {
    takeResourcesIn();
}

std::optional<std::string> ProgramResources::resource(std::string_view name, std::string_view extension) const {
    const std::string path = ":/" + std::string(name) + "." + std::string(extension);
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return file.readAll().toStdString();
}

}  // namespace kestrav
