#pragma once

#include <QAccessible>
#include <QCoreApplication>
#include <QFrame>
#include <functional>

#include "app/Report.h"
#include "app/qt/OutcomeSign.h"

class QBoxLayout;
class QLabel;
class QPushButton;
class QTimer;

namespace kestrav {

class StatusLine;

/// How the newest update stands, at one glance: a sign, what counts in one line, what to do in another, and below them
/// what the service itself has said. What is shown stays until something else is. A screen reader is told of what has
/// stood for a moment, as of a notification. Used on the main thread.
class OutcomePanel final : public QFrame {
    Q_DECLARE_TR_FUNCTIONS(OutcomePanel)

  public:
    explicit OutcomePanel(QWidget* parent = nullptr);

    /// Nothing has been sent yet.
    void showReady();
    /// An administrator is asked for consent, at the launch.
    void showAsking();
    /// Something goes on. Only another `headline` than before is announced: numbers belong into `more`.
    void showWorking(const QString& headline, const QString& more, const QString& remedy);
    /// An update is over. `report` has a fixed place in memory.
    void showReport(const Report& report);

    /// Whether the button is offered with which the same image is sent again; only beside a report that allows it.
    void offerToSendAgain(bool offered);
    /// Called when that button is pressed.
    void setSendAgain(std::function<void()> sendAgain) { sendAgain_ = std::move(sendAgain); }

    /// Where the service's own sentence stands.
    StatusLine& statusLine() { return *statusLine_; }
    /// Puts the indicator below the words; it is this object's from then on.
    void takeIndicator(QWidget* indicator);

    /// The sentences that help can be looked up by, in English, the service's own first.
    QStringList sentences() const;

    /// All that the panel says, for whoever does not see it.
    QString words() const;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void makeParts();
    void layOut();
    void say(OutcomeSign::Kind kind, const QString& headline, const QString& more, const QString& remedy);
    void announce();
    void tell(QAccessible::Event what);
    static void setShown(QWidget& part, bool shown);

    OutcomeSign* sign_ = nullptr;
    QLabel* headline_ = nullptr;
    QLabel* remedy_ = nullptr;
    QPushButton* again_ = nullptr;
    StatusLine* statusLine_ = nullptr;
    QBoxLayout* column_ = nullptr;
    QString said_;
    QTimer* announcement_ = nullptr;
    const Report* report_ = nullptr;
    std::function<void()> sendAgain_ = [] {};
};

}  // namespace kestrav
