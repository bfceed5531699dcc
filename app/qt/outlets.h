#pragma once

#include <QPointer>
#include <QProgressBar>
#include <QPushButton>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/LogText.h"
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

/// A bar that runs to and fro, and is not to be seen when it rests.
class ProgressBarOutlet final : public ActivityIndicator {
  public:
    explicit ProgressBarOutlet(QProgressBar& bar) : bar_(&bar) {}

    void startAnimation(const Button& sender) override;
    void stopAnimation(const Button& sender) override;

  private:
    QPointer<QProgressBar> bar_;
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
