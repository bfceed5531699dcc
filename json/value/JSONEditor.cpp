#include "json/value/JSONEditor.h"

#include <utility>

#include "json/value/putMember.h"
#include "json/value/removeMember.h"

namespace kestrav {

Tree* JSONEditor::place(std::span<const JSONKey> path) {
    // Nothing on the way is made its own before it is certain that the path leads somewhere.
    if (!path.empty() && findByPath(&value_.object_, path) == nullptr) return nullptr;
    Tree* at = &value_.object_;
    for (const JSONKey& key : path)
        at = mutableMember(*at, key);
    return at;
}

bool JSONEditor::set(JSON value) {
    Tree object = std::move(value).takeObject();
    const std::span path(path_);
    if (path.empty()) {
        value_.setObject(std::move(object));
        return true;
    }
    Tree* container = place(path.first(path.size() - 1));
    return container != nullptr && putMember(*container, path.back(), std::move(object));
}

bool JSONEditor::append(JSON value) {
    Tree* list = place(path_);
    if (list == nullptr || !list->isList()) return false;
    list->append(std::move(value).takeObject());
    return true;
}

bool JSONEditor::insert(std::size_t index, JSON value) {
    Tree* list = place(path_);
    if (list == nullptr || !list->isList() || index > list->size()) return false;
    list->insert(index, std::move(value).takeObject());
    return true;
}

bool JSONEditor::remove(const JSONKey& key) {
    Tree* container = place(path_);
    return container != nullptr && removeMember(*container, key);
}

bool JSONEditor::remove() {
    if (path_.empty()) return false;
    const std::span path(path_);
    Tree* container = place(path.first(path.size() - 1));
    return container != nullptr && removeMember(*container, path.back());
}

}  // namespace kestrav
