#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kestrav {

/// A piece of memory that the nodes of one document lie in, side by side. Freed with the last of them, by the thread
/// that lets it go: whoever keeps a part of a document keeps the blocks that the part's nodes lie in, 64 KiB at most
/// for each node.
class NodeBlock {
  public:
    /// Nodes lie at multiples of this, counted from the block's beginning; sixteen bits hold how many.
    static constexpr std::size_t kStep = 8;
    static constexpr std::size_t kMostBytes = std::size_t{64} << 10U;

    /// Held by whoever puts nodes into it, until he closes it. `bytes` includes the block itself.
    static NodeBlock* make(std::size_t bytes);
    /// No more nodes come. `nodes` have been put into the block, of which some may be gone already.
    void close(std::size_t nodes) noexcept { release(kOpen - nodes); }
    /// So many of its nodes are gone.
    void release(std::size_t nodes) noexcept;

    static NodeBlock* behind(void* node, std::size_t steps) noexcept {
        return reinterpret_cast<NodeBlock*>(static_cast<char*>(node) - steps * kStep);
    }

  private:
    /// More than the nodes of any block, so that an open one is never freed.
    static constexpr std::size_t kOpen = std::size_t{1} << 32U;

    NodeBlock() noexcept = default;

    std::atomic<std::size_t> held_{kOpen};
};

static_assert(NodeBlock::kMostBytes / NodeBlock::kStep < std::size_t{1} << 16U);

}  // namespace kestrav
