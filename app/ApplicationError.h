#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

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

/// The system's error `number` at `doing`, a phrase such as "create the folder /x".
ApplicationError systemError(int number, const std::string& doing);

}  // namespace kestrav
