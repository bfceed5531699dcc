#pragma once

namespace kestrav {

// What the sanitizers take of a process for themselves, for cases that count it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KESTRAV_MEMORY_IS_WATCHED true
#elif defined(__has_feature)
#define KESTRAV_MEMORY_IS_WATCHED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define KESTRAV_MEMORY_IS_WATCHED false
#endif

#if defined(__has_feature)
#define KESTRAV_BEHAVIOUR_IS_WATCHED __has_feature(undefined_behavior_sanitizer)
#else
#define KESTRAV_BEHAVIOUR_IS_WATCHED false
#endif

/// Whether memory behaves as in the finished program. Under the sanitizers it doesn't: they keep much of it and of the
/// address space for themselves, and end the process where a request is too large for any machine.
inline constexpr bool kMemoryIsOurs = !KESTRAV_MEMORY_IS_WATCHED;

/// Whether a process may use up its descriptors. The checks for undefined behaviour need one now and then: to see
/// whether an object is there they write it into a pipe, and without a descriptor for that they end the process.
inline constexpr bool kDescriptorsAreOurs = !KESTRAV_BEHAVIOUR_IS_WATCHED;

#undef KESTRAV_MEMORY_IS_WATCHED
#undef KESTRAV_BEHAVIOUR_IS_WATCHED

}  // namespace kestrav
