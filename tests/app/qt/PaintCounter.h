#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>
#include <atomic>

#include "app/qt/LogTextEdit.h"

namespace kestrav {

/// Counts how often a widget was painted, and keeps how many lines the log had the last time.
class PaintCounter final : public QObject {
  public:
    explicit PaintCounter(QWidget& widget, const LogTextEdit* log = nullptr) : log_(log) {
        widget.installEventFilter(this);
    }
    std::atomic<int> count = 0;
    std::atomic<int> lines = 0;

  protected:
    bool eventFilter(QObject* /*receiver*/, QEvent* event) override {
        if (event->type() != QEvent::Paint) return false;
        ++count;
        if (log_ != nullptr) lines = log_->blockCount() - 1;
        return false;
    }

  private:
    const LogTextEdit* log_;
};

}  // namespace kestrav
