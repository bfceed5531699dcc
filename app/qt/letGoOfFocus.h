#pragma once

class QWidget;

namespace kestrav {

/// Takes the keyboard's focus from a part that is to be disabled or hidden; nothing has it then. The toolkit itself
/// would hand it on to whatever comes next, in the end to the log, and a screen reader would read that out amid an
/// update.
void letGoOfFocus(QWidget& part);

}  // namespace kestrav
