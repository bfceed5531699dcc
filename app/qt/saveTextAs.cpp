#include "app/qt/saveTextAs.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QSaveFile>

namespace kestrav {

bool writeTextFile(const QString& path, std::string_view text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.data(), static_cast<qint64>(text.size()));
    return file.commit();
}

void saveTextAs(QWidget* parent, const QString& name, std::string_view text) {
    const QString title = QCoreApplication::translate("saveTextAs", "Save the log");
    const QString path =
        QFileDialog::getSaveFileName(parent, title, name, {}, nullptr, QFileDialog::DontUseNativeDialog);
    if (path.isEmpty() || writeTextFile(path, text)) return;
    QMessageBox message(QMessageBox::Warning, QCoreApplication::translate("saveTextAs", "Kestrav"),
                        QCoreApplication::translate("saveTextAs", "The log could not be saved to %1.").arg(path),
                        QMessageBox::Ok, parent);
    message.setTextFormat(Qt::PlainText);
    message.exec();
}

}  // namespace kestrav
