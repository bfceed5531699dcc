#pragma once

#include <QPointer>
#include <QPushButton>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/LogText.h"
#include "app/qt/ActivityBar.h"
#include "app/qt/LogTextEdit.h"

// The window's widgets as the controller knows them. Each outlives its widget harmlessly.

namespace kestrav {

/// A button's identifier is its object name.
class PushButtonOutlet final : public Button {
  public:
    explicit PushButtonOutlet(QPushButton& button) : button_(&button) {}

    std::optional<std::string> identifier() const override;
    void setEnabled(bool enabled) override;

  private:
    QPointer<QPushButton> button_;
};

/// Shown while it turns.
class ActivityBarOutlet final : public ActivityIndicator {
  public:
    explicit ActivityBarOutlet(ActivityBar& bar) : bar_(&bar) {}

    void startAnimation(const Button& sender) override;
    void stopAnimation(const Button& sender) override;

  private:
    QPointer<ActivityBar> bar_;
};

/// Crosses over to the main thread when used on another, and waits there until the line is painted.
class LogTextOutlet final : public LogText {
  public:
    explicit LogTextOutlet(LogTextEdit& edit) : edit_(&edit) {}

    std::optional<std::string> string() const override;
    bool append(std::string_view text) override;
    void scrollToEndOfDocument() override;

  private:
    QPointer<LogTextEdit> edit_;
};

}  // namespace kestrav
