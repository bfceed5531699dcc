#include "outcome/WriteWatch.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

#include "outcome/writeRequestIn.h"
#include "outcome/writtenSectors.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

// As often as the board is replaced at most.
constexpr std::chrono::milliseconds kPause{100};
// Below this a speed would be a guess.
constexpr std::chrono::milliseconds kLongEnough{200};

bool isSameWrite(const BoardEntry& one, const std::optional<BoardEntry>& other) {
    return other && one.writer == other->writer && one.writerStart == other->writerStart && one.begun == other->begun;
}

}  // namespace

WriteWatch::WriteWatch(ServiceAnswers& answers, Show show, BoardReader board, std::filesystem::path disks)
    : answers_(answers),
      show_(std::move(show)),
      board_(std::move(board)),
      disks_(std::move(disks)) {}

WriteWatch::~WriteWatch() {
    stop();
}

void WriteWatch::asked(std::string_view command, std::span<const std::string> arguments) {
    answers_.asked(command, arguments);
    if (AnswerTo::of(command, arguments).kind != AnswerTo::Kind::write) return;
    const Request request = writeRequestIn(arguments);
    Asked asked{request.disk, static_cast<std::uint64_t>(request.firstBlock), {}, {}};
    asked.before = board_.read(asked.disk);
    asked.sectors = writtenSectors(asked.disk, disks_);
    const std::scoped_lock lock(mutex_);
    asked_ = std::move(asked);
    phase_ = WritePhase::asking;
    isUnderWay_ = true;
    isGivenUp_ = false;
    if (!show_) return;
    show_({asked_.disk, WritePhase::asking});
    looking_ = std::thread([this] { look(); });
}

void WriteWatch::answered(std::string_view bytes) {
    stop();
    answers_.answered(bytes);
}

void WriteWatch::unanswered(const Unanswered& unanswered) {
    stop();
    answers_.unanswered(unanswered);
}

void WriteWatch::stop() {
    {
        const std::scoped_lock lock(mutex_);
        isUnderWay_ = false;
    }
    stopped_.notify_all();
    if (looking_.joinable()) looking_.join();
}

void WriteWatch::look() {
    WriteState shown;
    std::unique_lock lock(mutex_);
    while (!stopped_.wait_for(lock, kPause, [this] { return !isUnderWay_; })) {
        const auto entry = this->entry();
        const auto state = entry ? measured(*entry) : counted();
        if (state && *state != shown) show_(shown = *state);
    }
}

std::optional<WriteState> WriteWatch::state() {
    const std::scoped_lock lock(mutex_);
    if (!isUnderWay_) return std::nullopt;
    if (const auto entry = this->entry()) return measured(*entry);
    return counted().value_or(WriteState{asked_.disk, WritePhase::asking});
}

/// What the board says of this very write.
std::optional<BoardEntry> WriteWatch::entry() const {
    auto entry = board_.read(asked_.disk);
    if (!entry || isSameWrite(*entry, asked_.before)) return std::nullopt;
    const bool isOurs = entry->user == ::geteuid() && (entry->asker == 0 || entry->asker == ::getpid()) &&
                        entry->firstBlock == asked_.firstBlock;
    return isOurs ? entry : std::nullopt;
}

WriteState WriteWatch::measured(const BoardEntry& entry) {
    const Clock::time_point now = Clock::now();
    if (entry.phase != phase_ || entry.done < doneAtFirst_) {
        phase_ = entry.phase;
        doneAtFirst_ = entry.done;
        seenAtFirst_ = now;
    }
    WriteState state{entry.disk, entry.phase, entry.done, entry.of};
    const std::chrono::duration<double> taken = now - seenAtFirst_;
    if (taken > kLongEnough)
        state.bytesASecond = static_cast<std::uint64_t>(static_cast<double>(entry.done - doneAtFirst_) / taken.count());
    return state;
}

/// Where no board tells it: by what the kernel has written meanwhile, whoever had it written.
std::optional<WriteState> WriteWatch::counted() const {
    const auto sectors = writtenSectors(asked_.disk, disks_);
    if (!sectors || !asked_.sectors || *sectors <= *asked_.sectors) return std::nullopt;
    const auto of = static_cast<std::uint64_t>(bytes_);
    const std::uint64_t done = (*sectors - *asked_.sectors) * static_cast<std::uint64_t>(kBlockBytes);
    return WriteState{asked_.disk, WritePhase::writing, std::min(done, of), of};
}

WriteWatch::End WriteWatch::follow(const std::function<void()>& waits) {
    const End end = untilItsEnd(waits);
    stop();
    return end;
}

WriteWatch::End WriteWatch::untilItsEnd(const std::function<void()>& waits) {
    for (bool isWaiting = false;;) {
        std::unique_lock lock(mutex_);
        if (isGivenUp_) return End::unknown;
        isUnderWay_ = true;
        auto entry = this->entry();
        // Its last word may have come between the two looks.
        const bool isGone = entry && !entry->verdict && entry->writerIsGone();
        if (isGone) entry = this->entry();
        if (!entry) return End::unknown;
        if (entry->verdict) {
            return *entry->verdict == WriteVerdict::wrote     ? End::wrote
                   : *entry->verdict == WriteVerdict::refused ? End::refused
                                                              : End::failed;
        }
        if (isGone) return End::died;
        const WriteState state = measured(*entry);
        lock.unlock();
        if (!std::exchange(isWaiting, true)) waits();
        if (show_) show_(state);
        lock.lock();
        stopped_.wait_for(lock, kPause, [this] { return isGivenUp_; });
    }
}

void WriteWatch::giveUp() {
    {
        const std::scoped_lock lock(mutex_);
        isGivenUp_ = true;
    }
    stopped_.notify_all();
}

}  // namespace kestrav
