#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <sys/types.h>
#include <systemd/sd-event.h>

namespace kestrav {

/// libsystemd's event loop. One thread; a process that is forked off leaves it alone.
///
/// Handlers may throw: the loop ends then, and run() passes the exception on, since libsystemd's C must not see it.
/// A handler may release its own watch. Whatever can't be watched raises std::system_error.
class EventLoop {
  public:
    using Handler = std::function<void()>;

    struct Release {
        void operator()(sd_event* event) const noexcept { sd_event_unref(event); }
        /// Disabled as well: a source may be held by the loop a little longer.
        void operator()(sd_event_source* source) const noexcept { sd_event_source_disable_unref(source); }
    };
    /// Something is watched as long as this lives, which is not longer than what is watched.
    using Watch = std::unique_ptr<sd_event_source, Release>;

    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// Whenever something can be read there, or the other end has gone.
    Watch onReadable(int fd, Handler handler);
    /// Whenever the other end of that connection sends no more, be something left to be read or not.
    Watch onSendingEnded(int fd, Handler handler);
    /// Once, when that time has passed.
    Watch after(std::chrono::microseconds time, Handler handler);
    /// Once, when that child has ended; it is collected then. SIGCHLD has to be blocked.
    Watch onEndOf(pid_t child, Handler handler);
    /// Whenever that signal arrives, which has to be blocked.
    Watch onSignal(int number, Handler handler);
    /// After whatever else was handled.
    Watch afterEverything(Handler handler);

    /// Runs until end() is called.
    void run();
    void end() noexcept { isEnding_ = true; }

    /// Calls `handler` on behalf of libsystemd, as one of the loop's own.
    void call(const Handler& handler) noexcept;
    /// For libsystemd's bus.
    sd_event* get() const { return event_.get(); }

  private:
    struct Watched;
    static int dispatch(void* watched);
    static void forget(void* watched);
    Watch onEvents(int fd, std::uint32_t events, Handler handler);
    Watch keep(sd_event_source* source, int result, std::unique_ptr<Watched> watched);
    std::unique_ptr<Watched> watched(Handler handler);

    std::unique_ptr<sd_event, Release> event_;
    std::exception_ptr thrown_;
    bool isEnding_ = false;
};

}  // namespace kestrav
