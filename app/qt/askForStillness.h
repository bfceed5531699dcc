#pragma once

#include <functional>

class QObject;

namespace kestrav {

/// Asks the desktop's portal for settings, where GNOME and others keep it, whether the person wants as little motion as
/// can be. Returns at once; `wanted` is called later and on this thread if so. It is not called if not, if there is no
/// portal, or once `asker` is gone.
void askForStillness(QObject& asker, std::function<void()> wanted);

}  // namespace kestrav
