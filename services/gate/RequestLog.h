#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/types.h>

namespace kestrav {

class SystemLog;

/// The services' log of what they are asked. One who is refused again and again can't fill it: the first twenty
/// refusals of a user within a minute have a line each, the rest is counted, and one line says how many they were.
/// Refusals of root and of the service's own user always have their line.
///
/// Processes that are forked later count together with the one that made it, without waiting for each other.
class RequestLog {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /// A user whom the system does not tell.
    static constexpr uid_t kUnknown = static_cast<uid_t>(-1);
    static constexpr unsigned kListed = 20;
    static constexpr std::chrono::seconds kWindow{60};

    /// Nothing is owned. Throws std::bad_alloc.
    explicit RequestLog(SystemLog& log, std::chrono::steady_clock::duration window = kWindow,
                        std::function<Time()> now = std::chrono::steady_clock::now);

    /// A line that is always there: what was carried out, and what concerns the service itself.
    void write(std::string_view entry);
    /// A line about something that a user was refused.
    void refused(uid_t uid, std::string_view entry);

    /// When summarise() has something to write, if nothing else happens.
    std::optional<Time> nextSummary() const;
    /// Writes the lines on what was only counted, once its minute is over.
    void summarise();
    /// Writes them at once: the service ends.
    void finish();

  private:
    struct Counts;
    struct Unmap {
        void operator()(Counts* counts) const noexcept;
    };

    void closeWindow(std::chrono::steady_clock::rep end);

    SystemLog& log_;
    std::chrono::steady_clock::duration window_;
    std::function<Time()> now_;
    std::unique_ptr<Counts, Unmap> counts_;  ///< shared with forked processes
};

}  // namespace kestrav
