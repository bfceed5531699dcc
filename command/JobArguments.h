#pragma once

#include <string>
#include <tuple>

#include "json/JSONSerializable.h"

namespace kestrav {

/// A record of the command service's vocabulary, kept beside JobRequest; the updater does not send it.
struct JobArguments {
    std::string name;

    static constexpr auto JSONFields() { return std::tuple(JSONField{"name", &JobArguments::name}); }
};

}  // namespace kestrav
