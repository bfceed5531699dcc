#pragma once

#include <string_view>

#include "json/record/WithFormInJSON.h"

namespace kestrav {

/// One row of a record's field table. The compiler refuses a field that the conversion could only lose, and shows this
/// row with it. Such a field needs another type, or one of its own with a member `Tree JSONRepresentation() const`.
template <class Record, record::WithFormInJSON Value>
struct JSONField {
    std::string_view name;  ///< the member's key; a field without one is left out
    Value Record::*member;  ///< where its value stands
};
/// The types are told by the arguments.
template <class Record, record::WithFormInJSON Value>
JSONField(const char*, Value Record::*) -> JSONField<Record, Value>;

}  // namespace kestrav
