#include "app/qt/OutcomePanel.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

#include "app/qt/StatusLine.h"
#include "app/qt/WrappedLabel.h"
#include "app/qt/discernible.h"
#include "app/qt/letGoOfFocus.h"

namespace kestrav {
namespace {

/// Whatever a chooser that closes and the focus that comes back make a reader say is said by then: it breaks off what
/// it is saying for what is newer, and drops news of this kind while it is behind.
constexpr std::chrono::milliseconds kUntilAnnounced(500);

/// Readers speak a notification out when it comes to be shown, wherever the keyboard's focus is.
class Notification final : public QAccessibleWidget {
  public:
    explicit Notification(OutcomePanel& panel) : QAccessibleWidget(&panel, QAccessible::Notification), panel_(panel) {}

    QString text(QAccessible::Text which) const override {
        return which == QAccessible::Name ? panel_.words() : QAccessibleWidget::text(which);
    }

  private:
    OutcomePanel& panel_;
};

QAccessibleInterface* notificationFor(const QString& /*className*/, QObject* object) {
    auto* panel = dynamic_cast<OutcomePanel*>(object);
    return panel == nullptr ? nullptr : new Notification(*panel);
}

OutcomeSign::Kind signOf(Report::Kind kind) {
    if (kind == Report::Kind::success) return OutcomeSign::Kind::success;
    return kind == Report::Kind::notWritten ? OutcomeSign::Kind::notWritten : OutcomeSign::Kind::nobodyKnows;
}

}  // namespace

OutcomePanel::OutcomePanel(QWidget* parent) : QFrame(parent) {
    QAccessible::installFactory(notificationFor);
    makeParts();
    layOut();
    showReady();
}

void OutcomePanel::makeParts() {
    announcement_ = new QTimer(this);
    announcement_->setObjectName(QStringLiteral("announcement"));
    announcement_->setSingleShot(true);
    announcement_->setInterval(kUntilAnnounced);
    connect(announcement_, &QTimer::timeout, this, &OutcomePanel::announce);
    sign_ = new OutcomeSign(this);
    headline_ = new WrappedLabel(this);
    QFont bold = headline_->font();
    bold.setBold(true);
    headline_->setFont(bold);
    remedy_ = new WrappedLabel(this);
    again_ = new QPushButton(tr("Send &Again…"), this);
    again_->setObjectName(QStringLiteral("againBtn"));
    again_->setAccessibleName(tr("Send Again…"));
    again_->setAccessibleDescription(tr("Choose the same image once more"));
    again_->setToolTip(again_->accessibleDescription());
    again_->hide();
    connect(again_, &QPushButton::clicked, this, [this] {
        sendAgain_();
        if (again_->isVisible()) again_->setFocus();
    });
    statusLine_ = new StatusLine(this);
    statusLine_->setAccessibleName(tr("System message"));
    statusLine_->setAccessibleDescription(tr("What the service itself said last"));
    statusLine_->hide();
    connect(statusLine_, &QPlainTextEdit::textChanged, this,
            [this] { setShown(*statusLine_, !statusLine_->document()->isEmpty()); });
}

void OutcomePanel::layOut() {
    auto* words = new QVBoxLayout;
    words->setSpacing(1);
    words->addWidget(headline_);
    words->addWidget(remedy_);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(sign_, 0, Qt::AlignTop);
    row->addLayout(words, 1);
    row->addWidget(again_, 0, Qt::AlignVCenter);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(8, 4, 8, 4);
    column->setSpacing(2);
    column->addLayout(row);
    column->addWidget(statusLine_);
    column_ = column;
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
}

void OutcomePanel::takeIndicator(QWidget* indicator) {
    column_->addWidget(indicator);
}

void OutcomePanel::showReady() {
    report_ = nullptr;
    setShown(*again_, false);
    say(OutcomeSign::Kind::ready, tr("Nothing has been sent yet."), {}, tr("Choose an image with one of the buttons."));
}

void OutcomePanel::showAsking() {
    showWorking(tr("The helper that may reach the accessory's disk is being installed."), {},
                tr("That takes an administrator's password, once each launch. You may close the window instead."));
}

void OutcomePanel::showWorking(const QString& headline, const QString& more, const QString& remedy) {
    report_ = nullptr;
    setShown(*again_, false);
    say(OutcomeSign::Kind::working, headline, more, remedy);
}

void OutcomePanel::showReport(const Report& report) {
    report_ = &report;
    say(signOf(report.kind), QCoreApplication::translate("Report", report.headline), {},
        QCoreApplication::translate("Report", report.remedy));
}

void OutcomePanel::offerToSendAgain(bool offered) {
    setShown(*again_, offered && report_ != nullptr && report_->canBeSentAgain);
}

void OutcomePanel::setShown(QWidget& part, bool shown) {
    if (!shown) letGoOfFocus(part);
    part.setVisible(shown);
}

void OutcomePanel::say(OutcomeSign::Kind kind, const QString& headline, const QString& more, const QString& remedy) {
    sign_->setKind(kind);
    headline_->setText(more.isEmpty() ? headline : headline + ' ' + more);
    remedy_->setText(remedy);
    update();
    if (std::exchange(said_, headline + remedy) == said_) return;
    tell(QAccessible::NameChanged);
    announcement_->start();
}

QStringList OutcomePanel::sentences() const {
    QStringList all;
    if (!statusLine_->document()->isEmpty()) all += statusLine_->toPlainText();
    if (report_ != nullptr) all += QString::fromUtf8(report_->headline);
    return all;
}

QString OutcomePanel::words() const {
    return headline_->text() + ' ' + remedy_->text();
}

void OutcomePanel::announce() {
    tell(QAccessible::ObjectHide);
    tell(QAccessible::ObjectShow);
}

void OutcomePanel::tell(QAccessible::Event what) {
    if (!isVisible()) return;
    QAccessibleEvent event(this, what);
    QAccessible::updateAccessibility(&event);
}

void OutcomePanel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = OutcomeSign::colourOf(sign_->kind(), palette());
    const bool isEnd = sign_->kind() != OutcomeSign::Kind::ready && sign_->kind() != OutcomeSign::Kind::working;
    QColor tint = colour;
    tint.setAlphaF(isEnd ? 0.10F : 0.04F);
    QColor border = colour;
    border.setAlphaF(isEnd ? 0.9F : 0.3F);
    const QColor text = palette().color(QPalette::WindowText);
    painter.setPen(QPen(discernible(border, palette().color(QPalette::Window), text), 1));
    painter.setBrush(tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
}

}  // namespace kestrav
