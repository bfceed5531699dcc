#include "base/writeWithPatience.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace kestrav {
namespace {

bool getsRoom(int descriptor, std::chrono::milliseconds patience) {
    pollfd writing{descriptor, POLLOUT, 0};
    int ready = -1;
    do {
        ready = ::poll(&writing, 1, static_cast<int>(patience.count()));
    } while (ready < 0 && errno == EINTR);
    return ready == 1 && (writing.revents & POLLOUT) != 0;
}

}  // namespace

void writeWithPatience(int descriptor, std::string_view text, std::chrono::milliseconds patience) {
    while (!text.empty()) {
        // A pipe that has room at all has room for this much. O_NONBLOCK would say so as well, but it would hold for
        // everybody who shares the pipe or the terminal.
        if (patience != kEndlessPatience && !getsRoom(descriptor, patience)) return;
        const ssize_t written = ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace kestrav
