#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// Something that went wrong, as it is told to a person. Texts are UTF-8 sentences.
struct ApplicationError {
    std::string domain;  ///< whose `code` it is
    std::int64_t code = 0;
    std::string localizedDescription;
    std::optional<std::string> failureReason;
    std::shared_ptr<const ApplicationError> underlying;  ///< what it came from, if anything
};

/// The domain of errors whose code is the system's errno.
constexpr const char* kSystemErrorDomain = "errno";

/// A problem that has the system's error as its cause.
ApplicationError applicationError(const Problem& problem);

}  // namespace kestrav
