#pragma once

#include "app/Report.h"
#include "app/UpdateEnding.h"

namespace kestrav {

/// The words for an ending. docs/troubleshooting.md has the same, remedy by remedy, with what stands behind them.
const Report& reportOf(UpdateEnding ending);

}  // namespace kestrav
