#pragma once

#include <concepts>
#include <memory>
#include <string_view>
#include <tuple>

#include "json/record/Boxed.h"
#include "json/record/JSONField.h"
#include "json/record/JSONSerializable.h"
#include "json/record/WithFormInJSON.h"

namespace kestrav {

template <JSONSerializable Record>
Tree JSONRepresentation(const Record& record);

namespace record {

/// What is an object of a tree already, or becomes one by itself.
template <Object Value>
Tree objectOf(const Value& value) {
    if constexpr (std::same_as<Value, Tree>) {
        return value;
    } else if constexpr (Instance<Value>) {
        return Tree(std::shared_ptr<const TreeObject>(value));
    } else if constexpr (Text<Value>) {
        return Tree(std::string_view(value));
    } else if constexpr (std::floating_point<Value>) {
        return Tree(static_cast<double>(value));
    } else {
        return Tree(value);
    }
}

/// An element of a list or map. Elements are not converted further: a record among them is carried as it is.
template <class Value>
// frozen: F83
Tree bridged(const Value& value) {
    if constexpr (Map<Value>) {
        Tree map = Tree::map();
        for (const auto& [key, member] : value)
            map.setMember(key, bridged(member));
        return map;
    } else if constexpr (List<Value>) {
        Tree list = Tree::list();
        for (const auto& element : value)
            list.append(bridged<typename Value::value_type>(element));
        return list;
    } else if constexpr (Object<Value>) {
        return objectOf(value);
    } else {
        return Tree(std::make_shared<const Boxed<Value>>(value));
    }
}

/// Stores one field. The order of the cases matters: what is an object already stays that object, even when it could
/// give a representation of itself. What fits no case leaves no member.
template <class Value>
// frozen: F83, F84
void store(Tree& map, std::string_view name, const Value& value) {
    if (name.empty()) return;
    if constexpr (Map<Value> || List<Value>) {
        map.setMember(name, bridged(value));
    } else if constexpr (Object<Value>) {
        map.setMember(name, objectOf(value));
    } else if constexpr (JSONSerializable<Value>) {
        map.setMember(name, JSONRepresentation(value));
    } else if constexpr (JSONRepresentable<Value>) {
        map.setMember(name, value.JSONRepresentation());
    }
}

}  // namespace record

/// The record as a map from its fields' names to their values. A field is a map, a list, a text, number, boolean, Tree,
/// shared pointer to a TreeObject, or something JSONRepresentable, such as a nested record; a field of a class that is
/// none of these is left out, and so is one without a name. What else a field can't be, JSONField says when it is
/// compiled. Never fails; nothing here checks that the map can be written: see isValidJSONObject().
template <JSONSerializable Record>
Tree JSONRepresentation(const Record& record) {
    Tree map = Tree::map();
    std::apply([&](const auto&... fields) { (record::store(map, fields.name, record.*fields.member), ...); },
               Record::JSONFields());
    return map;
}

}  // namespace kestrav
