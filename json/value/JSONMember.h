#pragma once

#include "json/value/JSONMemberKey.h"

namespace kestrav {

/// One member of a JSON value that is walked. It can't be assigned to: it is a copy, and the walked value would not
/// change.
template <class Value>
struct JSONMember {
    JSONMemberKey key;  ///< what it is called
    const Value value;  ///< what it is
};

}  // namespace kestrav
