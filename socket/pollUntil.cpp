#include "socket/pollUntil.h"

#include <algorithm>
#include <ctime>

#include "base/retry.h"

namespace kestrav {
namespace {

timespec timeLeft(PollClock::time_point deadline) {
    const PollClock::duration left = std::max(deadline - PollClock::now(), PollClock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    return {seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
}

}  // namespace

// poll rather than select, whose descriptor sets end at 1024. A closed descriptor is an error of the whole call
// to select and a mere event to poll.
std::int32_t pollUntil(pollfd& entry, PollClock::time_point deadline) {
    const int ready = retry([&] {
        const timespec left = timeLeft(deadline);
        return ::ppoll(&entry, 1, &left, nullptr);
    });
    return ready > 0 && (entry.revents & POLLNVAL) != 0 ? -1 : ready;
}

}  // namespace kestrav
