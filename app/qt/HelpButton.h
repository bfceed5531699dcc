#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <QToolButton>
#include <functional>
#include <string>

#include "app/SupportRecord.h"
#include "app/qt/SupportText.h"

class QMenu;

namespace kestrav {

/// The "?" in the corner, and what lies behind it: the page that explains what is shown, what somebody who helps needs,
/// and what the program is.
class HelpButton final : public QToolButton {
    Q_DECLARE_TR_FUNCTIONS(HelpButton)

  public:
    explicit HelpButton(QWidget* parent);

    /// Tells the sentences that stand in the window, in English, the most telling one first.
    void setSought(std::function<QStringList()> sought) { sought_ = std::move(sought); }
    /// Tells what the window says, as it says it.
    void setShown(std::function<QString()> shown) { shown_ = std::move(shown); }

    /// No higher than a line of text, since one stands beside it.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    SupportRecord& record() { return record_; }
    const QMenu& menuOfPages() const { return *menu_; }

    void showHelp();
    void showAbout();
    void copyForSupport();
    void saveWithTimes();

  private:
    QMenu* menu_ = nullptr;
    SupportRecord record_;
    SupportText support_{this};
    std::function<QStringList()> sought_ = [] { return QStringList(); };
    std::function<QString()> shown_ = [] { return QString(); };
};

}  // namespace kestrav
