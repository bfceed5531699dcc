#pragma once

#include <cstddef>

#include "json/tree/TreeMapNode.h"
#include "json/value/JSONIndex.h"
#include "json/value/JSONMember.h"

namespace kestrav {

/// Walks the members of a JSON value. A plain value; the walked one must outlive it unchanged.
template <class Value>
class JSONIterator {
  public:
    /// What it gives: the member, with its key. Neither is a copy, so that a walk costs no more than the looking; a
    /// copy of either is one that lasts.
    using value_type = JSONMember<Value>;
    /// As iterators have it.
    using difference_type = std::ptrdiff_t;

    /// At the first member of that tree.
    static JSONIterator first(const Tree& walked) noexcept {
        if (walked.isList()) {
            auto* list = TreeNodes::node<TreeListNode>(walked);
            return {list == nullptr ? nullptr : list->elements(), JSONIndex::array(0)};
        }
        if (!walked.isMap()) return {nullptr, JSONIndex::null()};
        auto* map = TreeNodes::node<TreeMapNode>(walked);
        return {map == nullptr ? nullptr : map->parts(), JSONIndex::dictionary(0)};
    }
    /// Behind the last one; only to be compared with.
    static JSONIterator behind(const Tree& walked) noexcept {
        if (!walked.isList() && !walked.isMap()) return {nullptr, JSONIndex::null()};
        const auto* node = TreeNodes::node<TreeContainerNode>(walked);
        const std::size_t size = node == nullptr ? 0 : node->size;
        return {nullptr, walked.isList() ? JSONIndex::array(size) : JSONIndex::dictionary(size)};
    }

    /// The member here.
    value_type operator*() const {
        if (index_.kind() == JSONIndex::Case::array) return {JSONMemberKey(index_.position()), Value::borrowed(*at_)};
        return {JSONMemberKey(*at_), Value::borrowed(at_[1])};
    }
    /// To the next member.
    JSONIterator& operator++() noexcept {
        index_ = index_.next();
        at_ += index_.kind() == JSONIndex::Case::dictionary ? 2 : 1;
        return *this;
    }
    /// To the next member; gives where it was.
    JSONIterator operator++(int) noexcept {
        const JSONIterator before = *this;
        ++*this;
        return before;
    }
    /// The position here.
    JSONIndex index() const noexcept { return index_; }
    /// At the same position.
    friend bool operator==(const JSONIterator& left, const JSONIterator& right) noexcept {
        return left.index_ == right.index_;
    }

  private:
    JSONIterator(const Tree* at, JSONIndex index) noexcept : at_(at), index_(index) {}

    const Tree* at_;  // the element, or the key that its value follows
    JSONIndex index_;
};

}  // namespace kestrav
