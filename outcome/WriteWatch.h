#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "command/AnswerSink.h"
#include "command/BoardReader.h"
#include "outcome/ServiceAnswers.h"
#include "outcome/WriteState.h"

namespace kestrav {

/// Watches the writes that are asked of the service, from the request to the answer, and past it where none came: on
/// the service's board, and where that says nothing, by what the kernel counts. Passes on what is answered.
///
/// Asks nobody and changes nothing, so a write goes on in the same way without it. `show` is called on a thread of this
/// object while an exchange is under way, and on the caller's in follow().
class WriteWatch final : public AnswerSink {
  public:
    using Show = std::function<void(const WriteState&)>;

    /// How a write ended that brought no answer.
    enum class End {
        wrote,
        refused,
        failed,
        died,     ///< who wrote is gone and has not said how it ended
        unknown,  ///< there is no board, or nothing of this write on it
    };

    /// `answers` is not owned and outlives this object. Without `show` nothing is looked at before somebody asks.
    /// `disks` is where the kernel counts, for tests.
    WriteWatch(ServiceAnswers& answers, Show show, BoardReader board = BoardReader(),
               std::filesystem::path disks = "/sys/block");
    ~WriteWatch() override;
    WriteWatch(const WriteWatch&) = delete;
    WriteWatch& operator=(const WriteWatch&) = delete;

    /// The length of the image that is going to be sent; for the share where only the kernel counts.
    void expect(std::int64_t bytes) { bytes_ = bytes; }

    /// How far the write has come that is under way; nothing when none is. May be asked on any thread.
    std::optional<WriteState> state();

    /// Waits for the end of the write that was asked for last, as long as the board says that it goes on. `waits` is
    /// called once, where there is something to wait for.
    End follow(const std::function<void()>& waits);

    /// Has follow() come back soon, with `unknown`, until something is asked for again. May be called on any thread.
    void giveUp();

    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view bytes) override;
    void unanswered(const Unanswered& unanswered) override;

  private:
    using Clock = std::chrono::steady_clock;
    /// The write that was asked for last.
    struct Asked {
        std::string disk;
        std::uint64_t firstBlock = 0;
        std::optional<BoardEntry> before;      ///< what the board said then, which is of another write
        std::optional<std::uint64_t> sectors;  ///< what the kernel had counted then
    };

    std::optional<BoardEntry> entry() const;
    WriteState measured(const BoardEntry& entry);
    std::optional<WriteState> counted() const;
    End untilItsEnd(const std::function<void()>& waits);
    void look();
    void stop();

    ServiceAnswers& answers_;
    Show show_;
    BoardReader board_;
    std::filesystem::path disks_;
    std::int64_t bytes_ = 0;
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool isUnderWay_ = false;
    bool isGivenUp_ = false;
    Asked asked_;
    WritePhase phase_ = WritePhase::asking;  ///< seen last, for the speed in it
    std::uint64_t doneAtFirst_ = 0;          ///< of that phase
    Clock::time_point seenAtFirst_;
    std::thread looking_;
};

}  // namespace kestrav
