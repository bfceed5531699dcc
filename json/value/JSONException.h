#pragma once

#include <stdexcept>
#include <utility>

#include "json/value/JSONError.h"

namespace kestrav {

/// Raised when a JSON value can't be written to bytes; nothing else of JSON raises.
class JSONException : public std::runtime_error {
  public:
    /// The message of `error` is what() says.
    explicit JSONException(JSONError error)
        : std::runtime_error(error.localizedDescription()),
          error_(std::move(error)) {}
    /// Why it can't be written.
    const JSONError& error() const noexcept { return error_; }

  private:
    JSONError error_;
};

}  // namespace kestrav
