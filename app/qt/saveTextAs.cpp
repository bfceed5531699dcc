#include "app/qt/saveTextAs.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QSaveFile>

#include "app/qt/fitOnScreen.h"
#include "app/qt/setPlainTexts.h"

namespace kestrav {

namespace {

/// Empty if none was chosen.
QString chosenPath(QWidget* parent, const QString& title, const QString& name) {
    QFileDialog dialog(parent, title);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.selectFile(name);
    fitOnScreen(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

}  // namespace

bool writeTextFile(const QString& path, std::string_view text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.data(), static_cast<qint64>(text.size()));
    return file.commit();
}

void saveTextAs(QWidget* parent, const QString& name, std::string_view text) {
    const QString title = QCoreApplication::translate("saveTextAs", "Save the log");
    const QString path = chosenPath(parent, title, name);
    if (path.isEmpty() || writeTextFile(path, text)) return;
    QMessageBox message(QMessageBox::Warning, QCoreApplication::translate("saveTextAs", "Kestrav"), {}, QMessageBox::Ok,
                        parent);
    setPlainTexts(message, QCoreApplication::translate("saveTextAs", "The log could not be saved to %1.").arg(path));
    message.exec();
}

}  // namespace kestrav
