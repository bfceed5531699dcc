#pragma once

class QWidget;

namespace kestrav {

struct Report;

/// Tells a person who looks elsewhere that an update is over: the window asks for attention, and the desktop shows a
/// notification, an urgent one unless the image is on the accessory. Waits for nobody; where there is no session bus,
/// or nobody on it who shows notifications, the window alone has to do.
void announceEnd(QWidget& window, const Report& report);

}  // namespace kestrav
