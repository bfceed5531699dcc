#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>

#include "base/UniqueFd.h"
#include "services/gate/WriteProgress.h"

namespace kestrav {

/// What one write says on the board: a file of its disk, readable by all and replaced whole, at most ten times a second
/// and with each change of phase. Numbers and fixed words alone; docs/protocol.md lists them.
///
/// From its beginning on a write has the board of its disk to itself, as long as its process lives. One for which
/// nobody has agreed yet only borrows it, and never takes away what another user's write said last within ten minutes:
/// anybody may ask, and nobody is to lose the outcome of a write by that.
///
/// The board never disturbs the write: where it can't be written there is none. What can't be replaced is taken away,
/// lest it mislead.
class BoardNote final : public WriteProgress {
  public:
    struct Subject {
        std::string disk;  ///< the kernel's name; it becomes a file's, so no more than letters, digits, - and _
        uid_t user = 0;    ///< who asks
        pid_t asker = 0;   ///< the process that asks; 0 where that is not known
        std::uint64_t firstBlock = 0;
    };
    static constexpr std::chrono::milliseconds kPause{100};
    static constexpr std::chrono::minutes kOutcomeIsKept{10};

    /// A note that is pinned nowhere.
    BoardNote() = default;
    /// In the process that writes. `folder` is made if it is missing; it has to belong to this process's user, and be
    /// writable by no other.
    BoardNote(const std::filesystem::path& folder, Subject subject);

    /// Somebody is asked whether this may be done.
    void ask();
    /// It may be done: the board is this write's from now on, or from when another write of that disk has ended.
    void begin();
    /// The image's length, once it is known.
    void measure(std::uint64_t bytes) { bytes_ = bytes; }
    void enter(WritePhase phase, std::uint64_t bytes) override;
    void advance(std::uint64_t bytes) override;
    /// The last that is said, and the board is free: what comes later says nothing. Without begin() it is said only
    /// where ask() was.
    void end(WriteVerdict verdict);

    /// Where a service keeps its board: what systemd has made for it; else root's place, or below the folder that the
    /// system has made for the user's session. Empty when there is no such place.
    static std::filesystem::path folderOfService();

  private:
    bool lock();
    void post();
    bool replace(const std::string& text) const;
    std::string current() const;
    bool mayBeAskedOver() const;
    std::string text() const;

    UniqueFd folder_;
    UniqueFd lock_;
    Subject subject_;
    std::string file_;
    std::string writer_;
    bool isBegun_ = false;
    std::uint64_t bytes_ = 0;
    WritePhase phase_ = WritePhase::asking;
    std::uint64_t done_ = 0;
    std::uint64_t of_ = 0;
    std::int64_t begun_ = 0;  ///< seconds since 1970
    std::string verdict_;
    std::chrono::steady_clock::time_point posted_;
};

}  // namespace kestrav
