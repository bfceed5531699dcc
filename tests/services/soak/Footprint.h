#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// What a process holds at a moment, as the kernel counts it.
struct Footprint {
    std::size_t descriptors = 0;
    std::size_t children = 0;
    std::uint64_t kibibytes = 0;  ///< memory of its own: heap and stack, without what it shares with files

    static Footprint of(pid_t process);
    /// Once it has no children and no more than `descriptors` any more, or after half a minute.
    static Footprint ofIdle(pid_t process, std::size_t descriptors);

    std::string text() const;
};

/// Ten tenths of many exchanges with a service, and what it holds after each.
struct Soak {
    Footprint atStart;
    std::uint64_t grown = 0;  ///< the most KiB in the first half, after which the allocator has what it needs
    std::uint64_t later = 0;  ///< the least in the second half: a page more or less at a moment is no growth
    Footprint atEnd;
    std::size_t failures = 0;  ///< exchanges that went wrong
};

/// `exchange` does so many exchanges and returns how many went wrong. Tells on standard output what came of each tenth.
Soak soak(const std::string& way, pid_t service, std::size_t exchanges,
          const std::function<std::size_t(std::size_t count)>& exchange);

/// `is`, after telling an answer that is not the right one.
bool isRight(bool is, const std::string& answer);

/// Does `task` in `count` processes at once, with their numbers from 0 on. The sum of what they return, which is how
/// often something went wrong; one that ends in another way counts as a thousand.
std::size_t inProcesses(unsigned count, const std::function<std::size_t(unsigned number)>& task);

}  // namespace kestrav
