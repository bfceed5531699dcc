#include "socket/socket_set_blocking.h"

#include <fcntl.h>

namespace kestrav {

void socket_set_blocking(std::int32_t fd, std::int32_t on) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0) return;
    ::fcntl(fd, F_SETFL, on != 0 ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

}  // namespace kestrav
