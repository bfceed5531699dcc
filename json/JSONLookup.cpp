#include <charconv>

#include "base/stopProcess.h"
#include "json/JSON.h"
#include "json/TreeNodes.h"
#include "json/pathLookup.h"

namespace kestrav {
namespace {

Tree* mutableMemberOf(Tree& container, const JSONKey& key) {
    if (const auto name = key.key()) return container.mutableMember(*name);
    const std::int64_t index = *key.index();
    return index < 0 ? nullptr : container.mutableElement(static_cast<std::size_t>(index));
}

void assignMember(Tree& container, const JSONKey& key, Tree value) {
    if (const auto name = key.key()) {
        if (container.isMap()) container.setMember(*name, std::move(value));
    } else if (Tree* element = mutableMemberOf(container, key)) {
        *element = std::move(value);
    }
}

template <class Index>
Index positionIn(const Tree& object, std::size_t position) noexcept {
    if (object.isList()) return Index::array(position);
    return object.isMap() ? Index::dictionary(position) : Index::null();
}

}  // namespace

std::optional<std::int64_t> JSONKey::index() const noexcept {
    if (kind() == Kind::key) return std::nullopt;
    return std::bit_cast<std::int64_t>(TreeNodes::words(value_).payload);
}

JSON JSON::notFound(std::span<const JSONKey> path) const {
    const Tree* place = &object_;
    for (std::size_t step = 0; step < path.size(); ++step) {
        const Tree* next = memberOf(*place, path[step]);
        // Every further key fails as well, and keeps the error of this one.
        if (next == nullptr) return step == 0 ? failed(path[step]) : JSON(*place).failed(path[step]);
        place = next;
    }
    return *this;
}

/// What `key` leads to when it leads nowhere: null with an error.
JSON JSON::failed(const JSONKey& key) const {
    const bool fits = key.index() ? object_.isList() : object_.isMap();
    JSON null;
    if (!fits && past().error) {
        null.setError(*past().error);
        return null;
    }
    std::string message;
    if (const auto index = key.index()) {
        message =
            "Array[" + std::to_string(*index) + "]" + (fits ? " is out of bounds" : " failure, It is not an array");
    } else {
        message = "Dictionary[\"" + std::string(*key.key()) + "\"]";
        message += fits ? " does not exist" : " failure, It is not an dictionary";
    }
    const std::int64_t missing = key.index() ? ErrorIndexOutOfBounds : ErrorNotExist;
    null.setError(makeJSONError(fits ? missing : ErrorWrongType, message));
    return null;
}

void JSON::assign(std::span<const JSONKey> path, const JSON& value) {
    if (path.empty() || !isContainer()) return;
    Tree object = value.object();
    Tree* target = &object_;
    for (; path.size() > 1; path = path.subspan(1)) {
        Tree* next = mutableMemberOf(*target, path[0]);
        // What is taken from here as a value and stored back is null unless JSON has a form for it.
        if (next == nullptr) return assignMember(*target, path[0], Tree());
        if (next->kind() == Tree::Kind::object) *next = Tree();
        target = next;
    }
    assignMember(*target, path[0], std::move(object));
}

JSONIndex JSON::startIndex() const noexcept {
    return positionIn<JSONIndex>(object_, 0);
}

JSONIndex JSON::endIndex() const noexcept {
    return positionIn<JSONIndex>(object_, object_.size());
}

JSONRawIndex JSON::startRawIndex() const noexcept {
    return positionIn<JSONRawIndex>(object_, 0);
}

JSONRawIndex JSON::endRawIndex() const noexcept {
    return positionIn<JSONRawIndex>(object_, object_.size());
}

std::pair<std::string, Tree> JSON::operator[](JSONRawIndex position) const {
    switch (position.kind()) {
        case JSONRawIndex::Case::array:
            require(object_.isList());
            return {std::to_string(position.position()), object_.element(position.position())};
        case JSONRawIndex::Case::dictionary:
            require(object_.isMap());
            return {std::string(object_.keyAt(position.position())), object_.valueAt(position.position())};
        case JSONRawIndex::Case::null:
            require(!isContainer());
            return {std::string(), Tree()};
    }
    stopProcess();
}

std::pair<std::string, JSON> JSON::operator[](JSONIndex position) const {
    const auto raw = [&] {
        switch (position.kind()) {
            case JSONIndex::Case::array:
                return JSONRawIndex::array(position.position());
            case JSONIndex::Case::dictionary:
                return JSONRawIndex::dictionary(position.position());
            case JSONIndex::Case::null:
                return JSONRawIndex::null();
        }
        stopProcess();
    }();
    auto found = (*this)[raw];
    return {std::move(found.first), JSON(std::move(found.second))};
}

JSON::Iterator JSON::begin() const {
    return {*this, startIndex()};
}

JSON::Iterator JSON::end() const {
    return {*this, endIndex()};
}

}  // namespace kestrav
