#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <sys/single_threaded.h>

#include "json/tree/NodeBlock.h"

namespace kestrav {

/// What all nodes of a tree begin with: one word that counts the trees that hold the node, says in which block of
/// memory it lies, whether a way to change its content has been handed out, and whether it is a list that rests on
/// another one. A node is released by the thread that lets its last reference go.
class TreeNode {
  public:
    /// A node in memory of its own.
    TreeNode() noexcept : word_(1) {}
    /// A node that lies so many steps behind the beginning of a block.
    explicit TreeNode(std::uint64_t blockSteps) noexcept : word_(blockSteps << kBlockShift | 1) {}

    /// Whoever copies holds a reference already, so nothing has to be seen in order here. As long as the process has
    /// one thread, plain steps do, which take a fifth of the time.
    void retain() noexcept {
        if (__libc_single_threaded) {
            word_.store(word_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        } else {
            word_.fetch_add(1, std::memory_order_relaxed);
        }
    }

    /// Whether the last reference was let go. A sole owner needs no read-modify-write, and most nodes have one.
    bool letGo() noexcept {
        if (isAlone()) return true;
        if (__libc_single_threaded) {
            word_.store(word_.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
            return false;
        }
        return (word_.fetch_sub(1, std::memory_order_acq_rel) & kReferences) == 1;
    }

    /// Whether one tree alone holds this node, which may then change it. Acquire, so that the other trees' last reads
    /// come before that change.
    bool isAlone() const noexcept { return (word_.load(std::memory_order_acquire) & kReferences) == 1; }

    /// Whether somebody may hold a pointer into the node by which he changes it: such a node is never shared. Only for
    /// a node that is held alone, as lent ones always are.
    bool isLent() const noexcept { return (word_.load(std::memory_order_relaxed) & kLent) != 0; }
    void setLent(bool lent) noexcept { setFlag(kLent, lent); }

    /// Whether this is a list that rests on another one: see TreeListNode. Changes only while the node is held alone.
    bool isBased() const noexcept { return (word_.load(std::memory_order_relaxed) & kBased) != 0; }
    void setBased(bool based) noexcept { setFlag(kBased, based); }

    /// Of a node that was let go: half a word in place of the count.
    void setLeftOver(std::uint32_t value) noexcept {
        const std::uint64_t rest = word_.load(std::memory_order_relaxed) & ~kReferences;
        word_.store(rest | value, std::memory_order_relaxed);
    }
    std::uint32_t leftOver() const noexcept {
        return static_cast<std::uint32_t>(word_.load(std::memory_order_relaxed));
    }

    /// The block that the node lies in; a null pointer when its memory is its own.
    NodeBlock* block() noexcept {
        const std::uint64_t steps = word_.load(std::memory_order_relaxed) >> kBlockShift;
        return steps == 0 ? nullptr : NodeBlock::behind(this, steps);
    }

  private:
    static constexpr int kBlockShift = 48;
    static constexpr std::uint64_t kLent = std::uint64_t{1} << (kBlockShift - 1);
    static constexpr std::uint64_t kBased = kLent >> 1U;
    static constexpr std::uint64_t kReferences = kBased - 1;

    void setFlag(std::uint64_t flag, bool on) noexcept {
        const std::uint64_t word = word_.load(std::memory_order_relaxed);
        word_.store(on ? word | flag : word & ~flag, std::memory_order_relaxed);
    }

    std::atomic<std::uint64_t> word_;
};

static_assert(sizeof(TreeNode) == sizeof(std::uint64_t));

}  // namespace kestrav
