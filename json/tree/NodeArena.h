#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

#include "json/tree/NodeBlock.h"

namespace kestrav {

/// Where the reader takes the memory of a document's nodes from: blocks, one after the other, of which each is used up
/// before the next. Taking a node's memory is then an addition, and neighbours in the document are neighbours in
/// memory. For one thread; the nodes are free to go to others.
class NodeArena {
  public:
    /// A piece of memory, and how many steps of its block lie before it; 0 when it is no part of a block.
    struct Place {
        void* at;
        std::uint64_t steps;
    };

    /// The first block is made for a document of that many bytes.
    explicit NodeArena(std::size_t documentSize) noexcept
        : nextSize_(std::clamp(documentSize, kFewestBytes, NodeBlock::kMostBytes)) {}
    NodeArena(const NodeArena&) = delete;
    NodeArena& operator=(const NodeArena&) = delete;
    ~NodeArena() {
        if (block_ != nullptr) block_->close(nodes_);
    }

    Place take(std::size_t bytes) {
        const std::size_t size = (bytes + NodeBlock::kStep - 1) / NodeBlock::kStep * NodeBlock::kStep;
        if (size > static_cast<std::size_t>(end_ - at_)) return takeElsewhere(size);
        return takeHere(size);
    }

  private:
    static constexpr std::size_t kFewestBytes = 256;
    /// What is larger has memory of its own, so that no block ends half empty.
    static constexpr std::size_t kLargeNode = NodeBlock::kMostBytes / 32;

    Place takeHere(std::size_t size) noexcept {
        const Place place{at_, static_cast<std::size_t>(at_ - reinterpret_cast<char*>(block_)) / NodeBlock::kStep};
        at_ += size;
        ++nodes_;
        return place;
    }
    Place takeElsewhere(std::size_t size);

    NodeBlock* block_ = nullptr;
    char* at_ = nullptr;
    char* end_ = nullptr;
    std::size_t nodes_ = 0;
    std::size_t nextSize_;
};

}  // namespace kestrav
