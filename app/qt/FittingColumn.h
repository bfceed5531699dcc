#pragma once

#include <QWidget>

namespace kestrav {

/// A column of parts that asks for the height that they need at the width they have, so that a window grows before a
/// sentence is cut off.
class FittingColumn final : public QWidget {
  public:
    using QWidget::QWidget;

  protected:
    bool event(QEvent* event) override;

  private:
    void fit();
};

}  // namespace kestrav
