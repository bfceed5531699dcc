#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kestrav {

/// What a node is opened for.
enum class DiskAccess {
    readOnly,      ///< reading alone
    readAndWrite,  ///< both
};

/// The system calls on a disk's node. Results are the system's own, a negative one meaning that the call failed;
/// being interrupted by a signal is no failure. May be used from several threads at once.
class DiskCalls {
  public:
    virtual ~DiskCalls() = default;

    /// A descriptor that the caller closes, or a negative value.
    virtual int open(const std::string& path, DiskAccess access) = 0;
    virtual void close(int descriptor) = 0;

    /// One transfer of at most the span's size at `offset` bytes from the start of the disk. Returns the bytes moved.
    virtual std::int64_t pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) = 0;
    virtual std::int64_t pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) = 0;

    /// Unmounts what is mounted at `path`, unless it is in use. Whether that worked is not reported.
    virtual void unmount(const std::string& path) = 0;
};

}  // namespace kestrav
