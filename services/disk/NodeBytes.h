#pragma once

#include "base/UniqueFd.h"
#include "services/disk/DiskBytes.h"

namespace kestrav {

/// The bytes of a disk behind an opened node. Goes past the system's cache where the node was opened with O_DIRECT and
/// takes it; falls back to the cache where it doesn't.
class NodeBytes final : public DiskBytes {
  public:
    /// `node` is open for what will be done with it. `size` and `blockSize` in bytes.
    NodeBytes(UniqueFd node, std::uint64_t size, std::uint32_t blockSize);

    std::uint64_t size() const override { return size_; }
    std::uint32_t blockSize() const override { return blockSize_; }
    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) override;
    Outcome<void> write(std::uint64_t offset, std::span<const std::byte> bytes) override;
    Outcome<void> flush() override;
    Outcome<ReadFrom> readBack(std::uint64_t offset, std::span<std::byte> into) override;

  private:
    bool leftDirectMode(const Problem& problem);
    bool notInCache(std::uint64_t offset, std::size_t length) const;

    UniqueFd node_;
    std::uint64_t size_;
    std::uint32_t blockSize_;
    bool direct_;
};

}  // namespace kestrav
