#pragma once

#include <string>
#include <tuple>

#include "json/record/JSONField.h"

namespace kestrav {

/// A record of the command service's vocabulary, kept beside JobRequest; the updater does not send it.
// frozen: F32
struct JobArguments {
    std::string name;  ///< of the argument

    /// The table that it is written by.
    static constexpr auto JSONFields() { return std::tuple(JSONField{"name", &JobArguments::name}); }
};

}  // namespace kestrav
