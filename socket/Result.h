#pragma once

#include <exception>
#include <utility>

#include "base/stopProcess.h"

namespace kestrav {

/// The outcome of an operation as a value, for code that hands outcomes on instead of throwing them.
// frozen: F59
class Result {
  public:
    /// Of an operation that did its work.
    static Result success() noexcept { return Result(nullptr); }
    /// `error` must hold an exception; the result shares it.
    static Result failure(std::exception_ptr error) noexcept {
        require(error != nullptr);
        return Result(std::move(error));
    }

    /// Which of the two it is.
    bool isSuccess() const noexcept { return error_ == nullptr; }
    bool isFailure() const noexcept { return error_ != nullptr; }
    /// What the failure carries; null for a success.
    const std::exception_ptr& error() const noexcept { return error_; }

  private:
    explicit Result(std::exception_ptr error) noexcept : error_(std::move(error)) {}

    std::exception_ptr error_;
};

}  // namespace kestrav
