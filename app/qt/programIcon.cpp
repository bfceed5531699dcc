#include "app/qt/programIcon.h"

#include <QFile>
#include <QImage>
#include <QPixmap>
#include <cstring>

namespace kestrav {

QIcon programIcon() {
    constexpr int kSide = 64;
    QImage picture(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    QFile file(QStringLiteral(":/kestrav-64.pixels"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray pixels = file.readAll();
    if (pixels.size() != picture.sizeInBytes()) return {};
    std::memcpy(picture.bits(), pixels.constData(), static_cast<std::size_t>(pixels.size()));
    return QIcon(QPixmap::fromImage(picture));
}

}  // namespace kestrav
