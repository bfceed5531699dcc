#include "app/qt/ActivityBarOutlet.h"

namespace kestrav {

void ActivityBarOutlet::startAnimation(const Button& /*sender*/) {
    if (bar_) bar_->setVisible(true);
}

void ActivityBarOutlet::stopAnimation(const Button& /*sender*/) {
    if (bar_) bar_->setVisible(false);
}

}  // namespace kestrav
