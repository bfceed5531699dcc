#include "json/value/removeMember.h"

#include "json/value/findByPath.h"

namespace kestrav {

bool removeMember(Tree& container, const JSONKey& key) {
    if (findByKey(container, key) == nullptr) return false;
    if (const auto name = key.key()) {
        container.removeMember(*name);
    } else {
        container.removeElement(static_cast<std::size_t>(*key.index()));
    }
    return true;
}

}  // namespace kestrav
