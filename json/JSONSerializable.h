#pragma once

#include <concepts>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "json/Tree.h"

namespace kestrav {

/// A plain record with a table of its fields, made of JSONField rows in the fields' order:
///
///     struct Lamp {
///         std::string name;
///         std::vector<std::string> colours;
///         static constexpr auto JSONFields() {
///             return std::tuple(JSONField{"name", &Lamp::name}, JSONField{"colours", &Lamp::colours});
///         }
///     };
///     const Tree map = JSONRepresentation(Lamp{"desk", {"red"}});
///
/// The table is all that it takes: a field that is added to it is a member of the JSON from then on.
template <class Record>
concept JSONSerializable = requires {
    Record::JSONFields();
};

/// What can stand as an object tree: a JSONSerializable record, or whatever else says how.
template <class Value>
concept JSONRepresentable = JSONSerializable<Value> || requires(const Value& value) {
    { value.JSONRepresentation() } -> std::same_as<Tree>;
};

/// One row of a record's field table.
template <class Record, class Value>
struct JSONField {
    std::string_view name;
    Value Record::*member;
};
template <class Record, class Value>
JSONField(const char*, Value Record::*) -> JSONField<Record, Value>;

template <JSONSerializable Record>
Tree JSONRepresentation(const Record& record);

namespace record {

template <class Value>
concept Text = std::convertible_to<const Value&, std::string_view>;
template <class Value>
concept Map = requires(const Value& value) {
    typename Value::key_type;
    typename Value::mapped_type;
    { value.begin()->first } -> std::convertible_to<std::string_view>;
};
template <class Value>
concept List = !Text<Value> && !Map<Value> && requires(const Value& value) {
    typename Value::value_type;
    value.begin();
    value.end();
};
template <class Value>
concept Instance = std::convertible_to<const Value&, std::shared_ptr<const TreeObject>>;
/// What is an object of the tree already or becomes one by itself.
template <class Value>
concept Object = Text<Value> || std::is_arithmetic_v<Value> || std::same_as<Value, Number> ||
    std::same_as<Value, Tree> || Instance<Value>;

/// An element that has no form of its own in a tree, kept whole.
template <class Value>
class Boxed final : public TreeObject {
  public:
    explicit Boxed(Value value) : value_(std::move(value)) {}
    const Value& value() const { return value_; }

  private:
    Value value_;
};

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
/// shared pointer to a TreeObject, or something JSONRepresentable, such as a nested record; a field of any other kind
/// is left out, and so is one without a name. Never fails; nothing here checks that the map can be written: see
/// isValidJSONObject().
template <JSONSerializable Record>
Tree JSONRepresentation(const Record& record) {
    Tree map = Tree::map();
    std::apply([&](const auto&... fields) { (record::store(map, fields.name, record.*fields.member), ...); },
               Record::JSONFields());
    return map;
}

}  // namespace kestrav
