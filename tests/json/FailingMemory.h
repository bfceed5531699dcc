#pragma once

#include <cstdint>
#include <functional>

namespace kestrav {

/// The memory of a test program that is linked with this: operator new and delete of the whole program. It counts the
/// pieces that live, overwrites what is freed, so that whoever still reads it is found out, and has none left when a
/// test says so. For one thread.
class FailingMemory {
  public:
    /// What becomes of the allocations after the one that fails: a change that takes something back must manage without
    /// memory, and one that swallowed the failure would go on unseen if there were none.
    enum class Later : std::uint8_t { succeed, fail };

    /// Has so many allocations succeed and the next one fail.
    static void failAfter(long long allowed, Later later) noexcept;
    /// From here on all succeed. Whether one has failed.
    static bool stopFailing() noexcept;
    /// How many pieces have been allocated and not freed.
    static long long living() noexcept;

    /// Runs `work` with its first allocation failing, then with its second, and so on until it has all that it asks
    /// for. It must raise std::bad_alloc exactly when one has failed; `afterFailure` looks at what it has left behind.
    /// Returns how many times one failed.
    static int failInTurn(Later later, const std::function<void()>& work, const std::function<void()>& afterFailure);
};

}  // namespace kestrav
