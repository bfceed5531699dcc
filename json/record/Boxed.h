#pragma once

#include <utility>

#include "json/tree/Tree.h"

namespace kestrav::record {

/// An element of a record's list or map that has no form of its own in a tree, kept whole.
template <class Value>
class Boxed final : public TreeObject {
  public:
    /// Holds `value`.
    explicit Boxed(Value value) : value_(std::move(value)) {}
    /// What it holds.
    const Value& value() const { return value_; }

  private:
    Value value_;
};

}  // namespace kestrav::record
