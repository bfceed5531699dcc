#include "app/qt/MessageBoxes.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVector>

#include "app/ApplicationError.h"

namespace kestrav {
namespace {

void setTexts(QMessageBox& box, const std::string& text, const std::string& informativeText) {
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString(text));
    box.setInformativeText(QString::fromStdString(informativeText));
    // A path may look like markup. The box applies the plain-text format to its first label only, so all are set here.
    for (QLabel* label : box.findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
    }
}

}  // namespace

std::string MessageBoxes::translate(const char* context, const char* text, const char* comment) const {
    return QCoreApplication::translate(context, text, comment).toStdString();
}

std::int32_t MessageBoxes::runModal(const Alert& alert) {
    QMessageBox box(&window_);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QCoreApplication::translate("MessageBoxes", "Kestrav"));
    setTexts(box, alert.messageText, alert.informativeText);
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
    setTexts(box, error.localizedDescription, details);
    box.exec();
    return false;
}

}  // namespace kestrav
