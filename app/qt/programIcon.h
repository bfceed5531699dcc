#pragma once

#include <QIcon>

namespace kestrav {

/// The program's icon, 64 by 64, which it brings along.
QIcon programIcon();

}  // namespace kestrav
