#pragma once

namespace kestrav {

/// Whom the kernel ends first when memory runs out (proc(5), oom_score_adj): a service before what it has begun, which
/// is a write mostly. A service that may not say so stays as it is; its unit lets both be said.
void endFirstForWantOfMemory();
void endLastForWantOfMemory();

}  // namespace kestrav
