#include "json/value/putMember.h"

#include <utility>

#include "json/tree/TreeNodes.h"

namespace kestrav {

Tree* mutableMember(Tree& container, const JSONKey& key) {
    if (const auto name = key.key()) return TreeNodes::ownMember(container, *name);
    const std::int64_t index = *key.index();
    return index < 0 ? nullptr : TreeNodes::ownElement(container, static_cast<std::size_t>(index));
}

bool putMember(Tree& container, const JSONKey& key, Tree value) {
    const auto name = key.key();
    if (name && container.isMap()) {
        container.setMember(*name, std::move(value));
        return true;
    }
    Tree* element = name ? nullptr : mutableMember(container, key);
    if (element == nullptr) return false;
    *element = std::move(value);
    return true;
}

}  // namespace kestrav
