#pragma once

namespace kestrav {

/// Whether memory behaves as in the finished program. Under the sanitizers it doesn't: they keep much of it for
/// themselves, and end the process where a request is too large for any machine.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kMemoryIsOurs = false;
#elif defined(__has_feature)
inline constexpr bool kMemoryIsOurs = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
inline constexpr bool kMemoryIsOurs = true;
#endif

}  // namespace kestrav
