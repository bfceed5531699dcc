#pragma once

#include <chrono>
#include <string_view>

namespace kestrav {

/// The patience of a writer that waits for ever.
inline constexpr std::chrono::milliseconds kEndlessPatience{-1};

/// Writes text to a descriptor whose reader may be slow, or may never read: each time that nothing more is taken, it is
/// waited for `patience` and no longer, and then the rest is dropped. The descriptor's mode stays as it is. SIGPIPE is
/// the caller's concern.
void writeWithPatience(int descriptor, std::string_view text, std::chrono::milliseconds patience);

}  // namespace kestrav
