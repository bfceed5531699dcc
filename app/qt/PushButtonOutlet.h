#pragma once

#include <QPointer>
#include <QPushButton>

#include "app/Button.h"

namespace kestrav {

/// A button as the window's controller knows it, its identifier being the widget's object name. Using it does nothing
/// once the widget is gone.
class PushButtonOutlet final : public Button {
  public:
    explicit PushButtonOutlet(QPushButton& button) : button_(&button) {}

    std::optional<std::string> identifier() const override;
    void setEnabled(bool enabled) override;

  private:
    QPointer<QPushButton> button_;
};

}  // namespace kestrav
