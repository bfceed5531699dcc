#pragma once

#include <QPlainTextEdit>
#include <QPointer>

#include "base/SystemLog.h"

namespace kestrav {

/// Shows one line of text, which can be selected and copied; a long one is folded and scrolled.
class StatusLine final : public QPlainTextEdit {
  public:
    explicit StatusLine(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void takeWindowColours();
};

/// Passes entries on to another log and shows the newest one. May be written to on any thread.
class StatusLineLog final : public SystemLog {
  public:
    /// `next` is not owned and outlives this object; the status line may go away before.
    StatusLineLog(SystemLog& next, StatusLine& line) : next_(next), line_(&line) {}

    void write(std::string_view entry) override;

  private:
    SystemLog& next_;
    QPointer<StatusLine> line_;
};

}  // namespace kestrav
