#pragma once

#include <concepts>

#include "json/tree/Tree.h"

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

}  // namespace kestrav
