#pragma once

#include <span>

#include "json/JSONKey.h"
#include "json/TreeNodes.h"

namespace kestrav {

// Lookups are short enough for the calls that they would take to be much of their cost, so they stand where the
// compiler can draw them into the caller.

/// The element or member of `container`; a null pointer when the key doesn't suit it or there is none.
inline const Tree* memberOf(const Tree& container, const JSONKey& key) noexcept {
    const Tree& wanted = key.object();
    if (TreeNodes::isInteger(wanted)) {
        if (!container.isList()) return nullptr;
        auto* list = TreeNodes::node<TreeListNode>(container);
        // A negative index is beyond every list when it is read without its sign.
        const std::uint64_t index = TreeNodes::words(wanted).payload;
        return list == nullptr || index >= list->size ? nullptr : list->elements() + index;
    }
    if (!container.isMap()) return nullptr;
    auto* map = TreeNodes::node<TreeMapNode>(container);
    return map == nullptr ? nullptr : TreeNodes::find(map, wanted);
}

/// Where the path leads from `place`; a null pointer when it is empty or leads nowhere.
inline const Tree* follow(const Tree* place, std::span<const JSONKey> path) noexcept {
    for (const JSONKey& key : path) {
        place = memberOf(*place, key);
        if (place == nullptr) return nullptr;
    }
    return path.empty() ? nullptr : place;
}

}  // namespace kestrav
