#include "json/tree/NodeBlock.h"

#include <new>

namespace kestrav {

NodeBlock* NodeBlock::make(std::size_t bytes) {
    return new (::operator new(bytes)) NodeBlock;
}

void NodeBlock::release(std::size_t nodes) noexcept {
    // Acquire and release, so that whatever was done to the other nodes comes before the block is freed.
    if (held_.fetch_sub(nodes, std::memory_order_acq_rel) != nodes) return;
    ::operator delete(this);
}

}  // namespace kestrav
