#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>
#include <system_error>

#include "base/UniqueFd.h"
#include "services/privileged/Caller.h"

namespace kestrav {

/// How long a file system may take over one step.
struct ImagePatience {
    std::chrono::milliseconds toOpen{10'000};
    std::chrono::milliseconds toRead{30'000};  ///< each piece of at most 1 MiB, and each look at the length
};

/// A process of its own that has one file open and hands over pieces of it. A network or user-space file system may
/// never answer, and who waits for it then can't even be killed: so it is this process that waits, and it is left
/// behind. The process that uses the reader has nothing of the file open itself.
///
/// Errors are errno's, besides: ETIMEDOUT when a step took too long, and from then on for every step;
/// std::errc::result_out_of_range when the file ends before what is read; EIO when the process was ended.
class ImageReader {
  public:
    struct File {
        std::error_code error;
        mode_t mode = 0;
        std::int64_t size = 0;
        dev_t fileSystem = 0;
    };

    /// Forks, so the calling process better has one thread only. The new process takes on `caller`'s rights and keeps
    /// nothing else open before it opens `path`.
    ImageReader(const std::string& path, const Caller& caller, ImagePatience patience);
    /// Ends the process; one that can't be ended is waited for a second and then left behind.
    ~ImageReader();
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

    /// What came of opening. Once, before anything else.
    File opened();
    /// The file as it is now.
    File look();
    std::error_code read(std::uint64_t offset, std::span<std::byte> into);

  private:
    struct Unmap {
        void operator()(std::byte* shared) const noexcept;
    };

    File answer(std::chrono::milliseconds patience);
    std::error_code readPiece(std::uint64_t offset, std::span<std::byte> into);

    ImagePatience patience_;
    std::error_code start_;
    std::unique_ptr<std::byte, Unmap> shared_;
    UniqueFd channel_;
    pid_t process_ = -1;
};

}  // namespace kestrav
