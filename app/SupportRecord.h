#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

#include "command/AnswerSink.h"

namespace kestrav {

/// What happened since the program was started, with the time of each entry, for whoever has to find out what went
/// wrong: the log's lines, what the service was asked, and what it answered. May be told on any thread.
class SupportRecord final : public AnswerSink {
  public:
    using Time = std::chrono::system_clock::time_point;

    /// As many entries are kept as are of use to a reader; the oldest go first, and text() says how many.
    static constexpr std::size_t kMostEntries = 20'000;

    /// `now` tells the time, for tests.
    explicit SupportRecord(std::function<Time()> now = std::chrono::system_clock::now) : now_(std::move(now)) {}

    /// `text` went to the log: one or more lines.
    void logged(std::string_view text);

    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view bytes) override;
    void unanswered(const Unanswered& unanswered) override;

    /// One line an entry, such as "2026-11-22T07:30:00.125Z log      Finished writing to device.". Each ends with a
    /// line feed, and what came from outside can neither end a line nor hide in it.
    std::string text() const;

    /// What an entry is about.
    enum class Kind { log, asked, answer };

  private:
    struct Entry {
        Time time;
        Kind kind = Kind::log;
        std::string line;
    };

    void enter(Kind kind, std::string_view line);

    std::function<Time()> now_;
    mutable std::mutex mutex_;
    std::deque<Entry> entries_;
    std::size_t dropped_ = 0;
};

}  // namespace kestrav
