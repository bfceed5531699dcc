#include "services/jobs/EventLoop.h"

#include <algorithm>
#include <ctime>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <system_error>
#include <utility>

namespace kestrav {
namespace {

/// How much later than asked for a time may be noticed.
constexpr std::uint64_t kAccuracy = 10'000;  // microseconds

void require(int result, const char* what) {
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

}  // namespace

struct EventLoop::Watched {
    EventLoop& loop;
    Handler handler;
};

EventLoop::EventLoop() {
    sd_event* raw = nullptr;
    require(sd_event_new(&raw), "no event loop");
    event_.reset(raw);
    // Takes the descriptor that all times share, while there are some.
    after({}, [] {});
}

std::unique_ptr<EventLoop::Watched> EventLoop::watched(Handler handler) {
    return std::unique_ptr<Watched>(new Watched{*this, std::move(handler)});
}

int EventLoop::dispatch(void* watched) {
    const auto& self = *static_cast<Watched*>(watched);
    self.loop.call(self.handler);
    return 0;
}

void EventLoop::forget(void* watched) {
    delete static_cast<Watched*>(watched);
}

EventLoop::Watch EventLoop::keep(sd_event_source* source, int result, std::unique_ptr<Watched> watched) {
    Watch watch(source);
    require(result, "can't be watched");
    // The loop lets go of it only after the handler has returned.
    sd_event_source_set_destroy_callback(source, forget);
    static_cast<void>(watched.release());
    return watch;
}

EventLoop::Watch EventLoop::onReadable(int fd, Handler handler) {
    return onEvents(fd, EPOLLIN, std::move(handler));
}

EventLoop::Watch EventLoop::onSendingEnded(int fd, Handler handler) {
    return onEvents(fd, EPOLLRDHUP, std::move(handler));
}

EventLoop::Watch EventLoop::onEvents(int fd, std::uint32_t events, Handler handler) {
    auto kept = watched(std::move(handler));
    sd_event_source* source = nullptr;
    const auto callback = [](sd_event_source*, int, std::uint32_t, void* self) { return dispatch(self); };
    const int result = sd_event_add_io(get(), &source, fd, events, callback, kept.get());
    return keep(source, result, std::move(kept));
}

EventLoop::Watch EventLoop::after(std::chrono::microseconds time, Handler handler) {
    auto kept = watched(std::move(handler));
    sd_event_source* source = nullptr;
    const auto callback = [](sd_event_source*, std::uint64_t, void* self) { return dispatch(self); };
    const auto microseconds = static_cast<std::uint64_t>(std::max(time.count(), std::chrono::microseconds::rep{0}));
    const int result =
        sd_event_add_time_relative(get(), &source, CLOCK_MONOTONIC, microseconds, kAccuracy, callback, kept.get());
    return keep(source, result, std::move(kept));
}

EventLoop::Watch EventLoop::onEndOf(pid_t child, Handler handler) {
    auto kept = watched(std::move(handler));
    sd_event_source* source = nullptr;
    const auto callback = [](sd_event_source*, const siginfo_t*, void* self) { return dispatch(self); };
    const int result = sd_event_add_child(get(), &source, child, WEXITED, callback, kept.get());
    return keep(source, result, std::move(kept));
}

EventLoop::Watch EventLoop::onSignal(int number, Handler handler) {
    auto kept = watched(std::move(handler));
    sd_event_source* source = nullptr;
    const auto callback = [](sd_event_source*, const signalfd_siginfo*, void* self) { return dispatch(self); };
    const int result = sd_event_add_signal(get(), &source, number, callback, kept.get());
    return keep(source, result, std::move(kept));
}

EventLoop::Watch EventLoop::afterEverything(Handler handler) {
    auto kept = watched(std::move(handler));
    sd_event_source* source = nullptr;
    const auto callback = [](sd_event_source*, void* self) { return dispatch(self); };
    const int result = sd_event_add_post(get(), &source, callback, kept.get());
    return keep(source, result, std::move(kept));
}

void EventLoop::run() {
    // Not with libsystemd's own way to end: that would close the bus, and the last answers may be still to be sent.
    while (!std::exchange(isEnding_, false))
        require(sd_event_run(get(), UINT64_MAX), "the event loop");
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

void EventLoop::call(const Handler& handler) noexcept {
    try {
        handler();
    } catch (...) {
        if (!thrown_) thrown_ = std::current_exception();
        end();
    }
}

}  // namespace kestrav
