#include "app/qt/MessageBoxes.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QVector>

#include "app/ApplicationError.h"
#include "app/qt/setPlainTexts.h"

namespace kestrav {

std::string MessageBoxes::translate(const char* context, const char* text, const char* comment) const {
    return QCoreApplication::translate(context, text, comment).toStdString();
}

std::int32_t MessageBoxes::runModal(const Alert& alert) {
    QMessageBox box(&window_);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QCoreApplication::translate("MessageBoxes", "Kestrav"));
    setPlainTexts(box, QString::fromStdString(alert.messageText), QString::fromStdString(alert.informativeText));
    QVector<QAbstractButton*> buttons;
    for (const std::string& title : alert.buttons) {
        const QString text = QString::fromStdString(title).replace('&', QStringLiteral("&&"));
        buttons.append(box.addButton(text, buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    }
    if (buttons.isEmpty()) buttons.append(box.addButton(QMessageBox::Ok));
    box.setEscapeButton(buttons.last());
    box.exec();
    const auto pressed = buttons.indexOf(box.clickedButton());
    return pressed < 0 ? -1 : static_cast<std::int32_t>(kFirstButtonReturn + pressed);
}

bool MessageBoxes::presentError(const ApplicationError& error) {
    QMessageBox box(&window_);
    box.setIcon(QMessageBox::Critical);
    box.setWindowTitle(QCoreApplication::translate("MessageBoxes", "Kestrav"));
    std::string details = error.failureReason.value_or("");
    if (error.underlying) details += (details.empty() ? "" : "\n\n") + error.underlying->localizedDescription;
    setPlainTexts(box, QString::fromStdString(error.localizedDescription), QString::fromStdString(details));
    box.exec();
    return false;
}

}  // namespace kestrav
