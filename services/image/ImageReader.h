#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "base/UniqueFd.h"
#include "services/image/UserRights.h"

namespace kestrav {

/// How long a file system may take over one step.
struct ImagePatience {
    std::chrono::milliseconds toOpen{10'000};
    std::chrono::milliseconds toRead{30'000};    ///< each piece of at most 1 MiB, and each look at the length
    std::chrono::milliseconds inAll{3'600'000};  ///< from opening on, for a whole write; 1 GiB over USB 1 takes less
};

/// A process of its own that has one file open and hands over pieces of it. A network or user-space file system may
/// never answer, and who waits for it then can't even be killed: so it is this process that waits, and it is left
/// behind. The process that uses the reader has nothing of the file open itself.
///
/// The causes of problems are the system's errors, besides: ETIMEDOUT when a step took too long, and from then on for
/// every step; std::errc::result_out_of_range when the file ends before what is read; EIO when the process was ended.
class ImageReader {
  public:
    struct File {
        mode_t mode = 0;
        std::int64_t size = 0;
        dev_t fileSystem = 0;
    };

    /// Forks, so the calling process better has one thread only. The new process takes on `rights`'s rights and keeps
    /// nothing else open before it opens `path`.
    ImageReader(const std::string& path, const UserRights& rights, ImagePatience patience);
    /// Ends the process; one that can't be ended is waited for a second and then left behind.
    ~ImageReader();
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

    /// What came of opening. Once, before anything else.
    Outcome<File> opened();
    /// The file as it is now.
    Outcome<File> look();
    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into);
    /// Whether the file has those bytes from `offset` on, and is `size` long then.
    Outcome<bool> holds(std::uint64_t offset, std::span<const std::byte> bytes, std::uint64_t size);
    /// Lets the process go, which is not waited for: nothing more is read.
    void end() noexcept;
    /// Whether all the time that there is has passed since the start.
    bool timeIsUp() const { return timeLeft() <= std::chrono::milliseconds::zero(); }

  private:
    struct Unmap {
        void operator()(std::byte* shared) const noexcept;
    };

    std::chrono::milliseconds timeLeft() const;
    Outcome<File> answer(std::chrono::milliseconds patience);
    Outcome<File> readPiece(std::uint64_t offset, std::size_t length);

    ImagePatience patience_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    Outcome<void> start_;
    std::unique_ptr<std::byte, Unmap> shared_;
    UniqueFd channel_;
    pid_t process_ = -1;
};

}  // namespace kestrav
