#pragma once

#include "json/value/JSONMemberKey.h"

namespace kestrav {

/// One member of a JSON value that is walked. It can't be assigned to, since the walked value would not change. Key and
/// value are borrowed from that value and last as long as it stays unchanged; a copy of the value, JSON kept = member,
/// is independent as any other.
template <class Value>
struct JSONMember {
    JSONMemberKey key;  ///< what it is called
    const Value value;  ///< what it is
};

}  // namespace kestrav
