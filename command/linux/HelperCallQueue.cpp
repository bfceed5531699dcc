#include "command/linux/HelperCallQueue.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <utility>

#include "base/stopProcess.h"

namespace kestrav {

HelperCallQueue::HelperCallQueue() : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    // Without a descriptor left in the process nothing could ever be asked or answered.
    require(static_cast<bool>(wakeUp_));
}

bool HelperCallQueue::put(HelperCall call) {
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.closed) return false;
        waiting_.calls.push_back(std::move(call));
    }
    wakeUp();
    return true;
}

void HelperCallQueue::close() {
    {
        const std::lock_guard lock(mutex_);
        waiting_.closed = true;
    }
    wakeUp();
}

HelperCallQueue::Taken HelperCallQueue::take() {
    std::uint64_t count = 0;
    // Nothing to read only means that the wake-up was taken before.
    [[maybe_unused]] const auto got = ::read(wakeUp_.get(), &count, sizeof count);
    const std::lock_guard lock(mutex_);
    return {std::exchange(waiting_.calls, {}), waiting_.closed};
}

void HelperCallQueue::wakeUp() {
    const std::uint64_t one = 1;
    // A full counter is readable as well.
    [[maybe_unused]] const auto put = ::write(wakeUp_.get(), &one, sizeof one);
}

}  // namespace kestrav
