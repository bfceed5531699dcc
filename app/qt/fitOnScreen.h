#pragma once

class QWidget;

namespace kestrav {

/// Makes a dialog that is not shown yet no larger than the screen that it comes up on, with the desktop's frame around
/// it: the buttons of one that reaches beyond the edge can't be pressed, and not every desktop has a way to get at
/// them.
void fitOnScreen(QWidget& dialog);

}  // namespace kestrav
