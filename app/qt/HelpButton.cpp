#include "app/qt/HelpButton.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include "app/qt/HelpPage.h"
#include "app/qt/saveTextAs.h"
#include "app/qt/setPlainTexts.h"

namespace kestrav {

HelpButton::HelpButton(QWidget* parent) : QToolButton(parent) {
    setObjectName(QStringLiteral("helpBtn"));
    setText(QStringLiteral("?"));
    setAutoRaise(true);
    setAccessibleName(tr("Help"));
    setToolTip(tr("Help, and what somebody who helps you needs"));
    setFocusPolicy(Qt::TabFocus);
    // Not the button's own menu: the arrow that comes with one has no room beside the sign.
    menu_ = new QMenu(this);
    connect(this, &QToolButton::clicked, menu_, [this] { menu_->popup(mapToGlobal(rect().bottomLeft())); });
    menu_->addAction(tr("&Help"), QKeySequence::HelpContents, this, &HelpButton::showHelp);
    menu_->addSeparator();
    menu_->addAction(tr("&Copy Everything for Support"), this, &HelpButton::copyForSupport);
    menu_->addAction(tr("&Save the Log with Times…"), this, &HelpButton::saveWithTimes);
    menu_->addSeparator();
    menu_->addAction(tr("&About Kestrav"), this, &HelpButton::showAbout);
    // A menu's keys work while it is open alone.
    window()->addAction(menu_->actions().first());
}

QSize HelpButton::sizeHint() const {
    return {fontMetrics().height() * 3 / 2, fontMetrics().height() + 2};
}

void HelpButton::showHelp() {
    (new HelpPage(window(), tr("Kestrav – Help"), QStringLiteral(":/troubleshooting.md"), sought_()))->show();
}

void HelpButton::showAbout() {
    auto* box = new QMessageBox(QMessageBox::NoIcon, tr("About Kestrav"), {}, QMessageBox::Close, window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIconPixmap(QGuiApplication::windowIcon().pixmap(64));
    setPlainTexts(*box, QStringLiteral("Kestrav " KESTRAV_VERSION),
                  tr("Updates the firmware and the icon of a USB accessory."));
    const QAbstractButton* licences = box->addButton(tr("&Licences…"), QMessageBox::ActionRole);
    connect(licences, &QAbstractButton::clicked, this, [this] {
        (new HelpPage(window(), tr("Kestrav – Licences"), QStringLiteral(":/dependencies.md")))->show();
    });
    box->open();
}

void HelpButton::copyForSupport() {
    support_.gather(shown_(), record_.text(), [this](const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        auto* box = new QMessageBox(QMessageBox::Information, tr("Kestrav"), {}, QMessageBox::Ok, window());
        box->setAttribute(Qt::WA_DeleteOnClose);
        setPlainTexts(*box, tr("Everything is on the clipboard."),
                      tr("Paste it into your message. It has the names of your image files and of your disks "
                         "in it, and nothing of what is in them."));
        box->open();
    });
}

void HelpButton::saveWithTimes() {
    saveTextAs(window(), QStringLiteral("kestrav-times.log"), record_.text());
}

}  // namespace kestrav
