#include "socket/switchOn.h"

#include <cstdint>
#include <sys/socket.h>

namespace kestrav {

int switchOn(int fd, int option) {
    const std::int32_t on = 1;
    return ::setsockopt(fd, SOL_SOCKET, option, &on, sizeof on);
}

}  // namespace kestrav
