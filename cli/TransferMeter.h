#pragma once

#include "device/DiskCalls.h"

namespace kestrav {

/// The disk calls of another object, with a look at how much the last transfer moved: the engine counts one that ends
/// early as a success, and fills the rest of a read with zeros, which must not pass for bytes of the disk.
class TransferMeter final : public DiskCalls {
  public:
    /// `disks` is not owned and outlives this object.
    explicit TransferMeter(DiskCalls& disks) : disks_(disks) {}

    /// Bytes that the last read gave, or the last write took; negative when it failed, 0 when there was none yet.
    std::int64_t lastRead() const noexcept { return lastRead_; }
    std::int64_t lastWritten() const noexcept { return lastWritten_; }

    int open(const std::string& path, DiskAccess access) override { return disks_.open(path, access); }
    void close(int descriptor) override { disks_.close(descriptor); }
    std::int64_t pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) override {
        lastRead_ = disks_.pread(descriptor, buffer, offset);
        return lastRead_;
    }
    std::int64_t pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) override {
        lastWritten_ = disks_.pwrite(descriptor, data, offset);
        return lastWritten_;
    }
    void unmount(const std::string& path) override { disks_.unmount(path); }

  private:
    DiskCalls& disks_;
    std::int64_t lastRead_ = 0;
    std::int64_t lastWritten_ = 0;
};

}  // namespace kestrav
