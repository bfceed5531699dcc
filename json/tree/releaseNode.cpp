#include "json/tree/releaseNode.h"

#include <bit>
#include <new>
#include <span>

#include "json/tree/TreeDecimalNode.h"
#include "json/tree/TreeMapNode.h"
#include "json/tree/TreeObjectNode.h"

namespace kestrav {
namespace {

/// The containers that wait for their release, linked through what nobody needs any more of them: see
/// TreeContainerNode::setNext(). The lowest bit of a link says that it leads to a map.
class ReleaseQueue {
  public:
    ReleaseQueue() noexcept = default;
    ReleaseQueue(const ReleaseQueue&) = delete;
    ReleaseQueue& operator=(const ReleaseQueue&) = delete;
    ~ReleaseQueue() { tellBlock(); }

    void drop(TreeNodes::Form form, TreeNode* node) noexcept {
        if (!node->letGo()) return;
        switch (form) {
            case TreeNodes::Form::list:
                return push(static_cast<TreeListNode*>(node), false);
            case TreeNodes::Form::map:
                return push(static_cast<TreeMapNode*>(node), true);
            case TreeNodes::Form::decimal:
                delete static_cast<TreeDecimalNode*>(node);
                return;
            case TreeNodes::Form::object:
                delete static_cast<TreeObjectNode*>(node);
                return;
            case TreeNodes::Form::longText:
                return giveBack(node);
            case TreeNodes::Form::null:
            case TreeNodes::Form::boolean:
            case TreeNodes::Form::integer:
            case TreeNodes::Form::unsignedInteger:
            case TreeNodes::Form::floating:
            case TreeNodes::Form::shortText:
                return;
        }
    }
    void run() noexcept {
        while (head_ != 0)
            releaseOne();
    }

  private:
    void push(TreeContainerNode* node, bool isMap) noexcept {
        node->setNext(head_);
        // Not by std::bit_cast: the static analyzer of clang 14 crashes on reckoning with its result.
        head_ = reinterpret_cast<std::uintptr_t>(node) | (isMap ? 1U : 0U);
    }
    void releaseOne() noexcept {
        auto* node = std::bit_cast<TreeContainerNode*>(head_ & ~std::uintptr_t{1});
        const std::size_t parts = std::size_t{node->size} << (head_ & 1U);
        head_ = node->next();
        if (node->isBased()) {
            dropCounted(static_cast<TreeListNode*>(node));
        } else {
            dropAll({reinterpret_cast<Tree*>(node + 1), parts});
        }
        giveBack(node);
    }
    void dropPart(const Tree& part) noexcept {
        if (TreeNodes::form(part) < TreeNodes::Form::decimal) return;
        if (auto* below = TreeNodes::node<TreeNode>(part)) drop(TreeNodes::form(part), below);
    }
    void dropAll(std::span<const Tree> parts) noexcept {
        const Tree* const end = parts.data() + parts.size();
        for (const Tree& part : parts) {
            if (end - &part > static_cast<std::ptrdiff_t>(TreeNodes::kEarly)) {
                TreeNodes::expect((&part)[TreeNodes::kEarly]);
            }
            dropPart(part);
        }
    }
    /// Of a list that rests on another one, what it holds beyond that one.
    void dropCounted(TreeListNode* list) noexcept {
        const Tree* word = list->elements();
        for (std::uint64_t bits : list->counted()) {
            for (; bits != 0; bits &= bits - 1)
                dropPart(word[std::countr_zero(bits)]);
            word += 64;
        }
        drop(TreeNodes::Form::list, list->base());
    }

    void giveBack(TreeNode* node) noexcept {
        NodeBlock* const block = node->block();
        if (block == nullptr) return ::operator delete(node);
        // Neighbours mostly go one after the other, and their block is told once.
        if (block != block_) tellBlock();
        block_ = block;
        ++gone_;
    }
    void tellBlock() noexcept {
        if (block_ != nullptr) block_->release(gone_);
        gone_ = 0;
    }

    std::uintptr_t head_ = 0;
    NodeBlock* block_ = nullptr;
    std::size_t gone_ = 0;
};

static_assert(sizeof(TreeListNode) == sizeof(TreeContainerNode) && sizeof(TreeMapNode) == sizeof(TreeContainerNode),
              "the parts of both begin behind what they have in common");

}  // namespace

void releaseNode(TreeNodes::Form form, TreeNode* node) noexcept {
    ReleaseQueue queue;
    queue.drop(form, node);
    queue.run();
}

}  // namespace kestrav
