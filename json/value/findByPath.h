#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "json/tree/TreeMapNode.h"
#include "json/value/JSONKey.h"

namespace kestrav {

// Lookups are short enough for the calls that they would take to be much of their cost, so they stand where the
// compiler can draw them into the caller.

/// The element of `container` at that position; a null pointer when it is no list or has no such element. A negative
/// position is beyond every list when it is read without its sign.
inline const Tree* findByPosition(const Tree& container, std::uint64_t position) noexcept {
    if (!container.isList()) return nullptr;
    auto* list = TreeNodes::node<TreeListNode>(container);
    return list == nullptr || position >= list->size ? nullptr : list->elements() + position;
}

/// The member of `container` under that key; a null pointer when it is no map or has no such member.
inline const Tree* findByName(const Tree& container, std::string_view name) noexcept {
    if (!container.isMap()) return nullptr;
    auto* map = TreeNodes::node<TreeMapNode>(container);
    return map == nullptr ? nullptr : map->find(TreeKey::of(name));
}

/// The element or member of `container`; a null pointer when the key doesn't suit it or there is none.
inline const Tree* findByKey(const Tree& container, const JSONKey& key) noexcept {
    const Tree& wanted = key.object();
    if (!wanted.isText()) return findByPosition(container, TreeNodes::words(wanted).payload);
    if (!container.isMap()) return nullptr;
    auto* map = TreeNodes::node<TreeMapNode>(container);
    return map == nullptr ? nullptr : map->find(TreeKey::of(wanted));
}

/// Where the path leads from `place`; a null pointer when it is empty or leads nowhere.
inline const Tree* findByPath(const Tree* place, std::span<const JSONKey> path) noexcept {
    for (const JSONKey& key : path) {
        place = findByKey(*place, key);
        if (place == nullptr) return nullptr;
    }
    return path.empty() ? nullptr : place;
}

}  // namespace kestrav
