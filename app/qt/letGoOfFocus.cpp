#include "app/qt/letGoOfFocus.h"

#include <QWidget>

namespace kestrav {

void letGoOfFocus(QWidget& part) {
    if (part.window()->focusWidget() == &part) part.clearFocus();
}

}  // namespace kestrav
