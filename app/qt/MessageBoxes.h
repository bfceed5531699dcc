#pragma once

#include "app/Alerts.h"

class QWidget;

namespace kestrav {

/// Alerts as message boxes before the window. Texts are shown as they are, never as markup.
class MessageBoxes final : public Alerts {
  public:
    /// `window` is not owned and outlives this object.
    explicit MessageBoxes(QWidget& window) : window_(window) {}

    std::string translate(const char* context, const char* text, const char* comment) const override;
    /// The last button is the one that Escape and closing the box stand for.
    std::int32_t runModal(const Alert& alert) override;
    /// Puts nothing right, so it is always false.
    bool presentError(const ApplicationError& error) override;

  private:
    QWidget& window_;
};

}  // namespace kestrav
