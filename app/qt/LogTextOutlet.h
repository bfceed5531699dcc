#pragma once

#include <QPointer>

#include "app/LogText.h"
#include "app/qt/LogTextEdit.h"

namespace kestrav {

/// The log's text as the window's controller knows it; using it does nothing once the widget is gone. Used on another
/// thread than the main one, it has the main one do the work and waits until the line is in the log; scrolling and
/// painting follow in their own time.
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
