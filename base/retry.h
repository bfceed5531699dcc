#pragma once

#include <cerrno>

namespace kestrav {

/// Makes a system call again as long as a signal interrupts it (EINTR): `retry([&] { return ::read(fd, at, size); })`.
/// Returns what the call returned at last; errno is the call's. Not for close(2), after which the descriptor is gone.
template <class Call>
auto retry(Call call) noexcept(noexcept(call())) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace kestrav
