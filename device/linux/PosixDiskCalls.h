#pragma once

#include "device/DiskCalls.h"

namespace kestrav {

/// The real calls: open(2), pread(2), pwrite(2), close(2) and umount2(2) without any force. Nodes are opened so that
/// no child process inherits them.
class PosixDiskCalls final : public DiskCalls {
  public:
    int open(const std::string& path, DiskAccess access) override;
    void close(int descriptor) override;
    std::int64_t pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) override;
    std::int64_t pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) override;
    void unmount(const std::string& path) override;
};

}  // namespace kestrav
