#pragma once

#include <functional>
#include <string>

namespace kestrav {

/// What `task` returns in a process of its own, which may take from itself what it never gets back; or how that process
/// has ended.
std::string inAProcess(const std::function<std::string()>& task);

/// From here on this process and its children get no socket of sock_diag's, as on a kernel without it. Ends a process
/// that can't be brought to that.
void loseSockDiag();

/// From here on this process and its children find nothing in /proc. Needs root; ends a process that can't be brought
/// to that.
void loseProc();

}  // namespace kestrav
