#include "base/writeWithPatience.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <unistd.h>

#include "base/retry.h"

namespace kestrav {
namespace {

bool getsRoom(int descriptor, std::chrono::milliseconds patience) {
    pollfd writing{descriptor, POLLOUT, 0};
    const int ready = retry([&] { return ::poll(&writing, 1, static_cast<int>(patience.count())); });
    return ready == 1 && (writing.revents & POLLOUT) != 0;
}

}  // namespace

void writeWithPatience(int descriptor, std::string_view text, std::chrono::milliseconds patience) {
    while (!text.empty()) {
        const ssize_t written = retry([&]() -> ssize_t {
            // A pipe that has room at all has room for this much. O_NONBLOCK would say so as well, but it would hold
            // for everybody who shares the pipe or the terminal.
            if (patience != kEndlessPatience && !getsRoom(descriptor, patience)) return 0;
            return ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        });
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace kestrav
