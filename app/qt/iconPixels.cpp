// icon_pixels PICTURE FILE: writes the picture's pixels as programIcon() reads them. Run by the build.

#include <QFile>
#include <QImage>
#include <cstdio>

int main(int argc, char* argv[]) {
    if (argc != 3) return 2;
    const QImage picture = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QFile file(QString::fromLocal8Bit(argv[2]));
    const bool isWritten =
        picture.width() == 64 && picture.height() == 64 && file.open(QIODevice::WriteOnly) &&
        file.write(reinterpret_cast<const char*>(picture.constBits()), picture.sizeInBytes()) == picture.sizeInBytes();
    if (isWritten) return 0;
    std::fprintf(stderr, "icon_pixels: %s is no picture of 64 by 64, or %s can't be written.\n", argv[1], argv[2]);
    return 1;
}
