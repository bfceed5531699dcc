#pragma once

class QWidget;

namespace kestrav {

/// Whether the person has asked the desktop to move as little as can be: by its style, which then gives animations no
/// time, or in KDE's settings, which other styles don't read. askForStillness() asks the other desktops.
bool prefersStillness(const QWidget& widget);

}  // namespace kestrav
