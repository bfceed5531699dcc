#pragma once

#include <cstdint>

namespace kestrav {

/// Puts a descriptor into blocking mode (`on` other than 0) or non-blocking mode (`on` is 0).
/// The other file status flags stay as they are. Failures are not reported.
void socket_set_blocking(std::int32_t fd, std::int32_t on);

}  // namespace kestrav
