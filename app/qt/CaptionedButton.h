#pragma once

#include <QPushButton>

namespace kestrav {

/// A push button whose caption can be read while it is disabled, too: the themes' grey is a contrast of 1.6 at times.
/// In a theme of high contrast it has a border that is seen.
class CaptionedButton : public QPushButton {
  public:
    explicit CaptionedButton(const QString& text, QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void keepCaptionReadable();
};

}  // namespace kestrav
