#include "json/tree/NodeArena.h"

#include <utility>

namespace kestrav {

NodeArena::Place NodeArena::takeElsewhere(std::size_t size) {
    if (size > std::min(kLargeNode, nextSize_ - sizeof(NodeBlock))) return {::operator new(size), 0};
    NodeBlock* const fresh = NodeBlock::make(nextSize_);
    if (NodeBlock* const full = std::exchange(block_, fresh)) full->close(nodes_);
    at_ = reinterpret_cast<char*>(fresh) + sizeof(NodeBlock);
    end_ = reinterpret_cast<char*>(fresh) + nextSize_;
    nodes_ = 0;
    nextSize_ = std::min(2 * nextSize_, NodeBlock::kMostBytes);
    return takeHere(size);
}

}  // namespace kestrav
