#include "app/qt/PushButtonOutlet.h"

namespace kestrav {

std::optional<std::string> PushButtonOutlet::identifier() const {
    if (!button_ || button_->objectName().isEmpty()) return std::nullopt;
    return button_->objectName().toStdString();
}

void PushButtonOutlet::setEnabled(bool enabled) {
    if (button_) button_->setEnabled(enabled);
}

}  // namespace kestrav
