#include "app/qt/PushButtonOutlet.h"

#include "app/qt/letGoOfFocus.h"

namespace kestrav {

std::optional<std::string> PushButtonOutlet::identifier() const {
    if (!button_ || button_->objectName().isEmpty()) return std::nullopt;
    return button_->objectName().toStdString();
}

void PushButtonOutlet::setEnabled(bool enabled) {
    if (!button_) return;
    if (!enabled) letGoOfFocus(*button_);
    button_->setEnabled(enabled);
    // Whoever has no mouse goes on from here.
    if (enabled && button_->window()->focusWidget() == nullptr) button_->setFocus();
}

}  // namespace kestrav
