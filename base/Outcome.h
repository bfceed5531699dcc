#pragma once

#include <string>
#include <system_error>
#include <utility>
#include <variant>

namespace kestrav {

/// Why something was not done, in words that whoever asked for it understands.
struct Problem {
    /// How far it went before it was given up.
    enum class Kind {
        refused,  ///< nothing was done
        failed,   ///< something was begun and went wrong
    };
    Kind kind = Kind::failed;  ///< how far it went
    std::string sentence;      ///< whole, with its full stop; UTF-8
    std::error_code cause;  ///< the system's error behind it, for callers that decide by it; empty when there is none
};

/// A problem of which nothing was begun.
inline Problem refused(std::string sentence, std::error_code cause = {}) {
    return {Problem::Kind::refused, std::move(sentence), cause};
}

/// A problem in the middle of it.
inline Problem failed(std::string sentence, std::error_code cause = {}) {
    return {Problem::Kind::failed, std::move(sentence), cause};
}

/// The value of an operation, or the problem that kept it from having one. The project's one shape of failure;
/// docs/architecture.md lists the few that are older and fixed.
template <class T>
class [[nodiscard]] Outcome {
  public:
    /// Either one, as it is returned.
    Outcome(T value) : state_(std::in_place_index<0>, std::move(value)) {}            // NOLINT: meant to be implicit
    Outcome(Problem problem) : state_(std::in_place_index<1>, std::move(problem)) {}  // NOLINT: meant to be implicit

    /// Whether there is a value.
    explicit operator bool() const noexcept { return state_.index() == 0; }

    /// Throws std::bad_variant_access when there is no value, problem() when there is one.
    T& value() { return std::get<0>(state_); }
    const T& value() const { return std::get<0>(state_); }
    const Problem& problem() const { return std::get<1>(state_); }

  private:
    std::variant<T, Problem> state_;
};

/// Done, or the problem that kept it from being done: `return {};` or `return failed(...);`.
template <>
class [[nodiscard]] Outcome<void> {
  public:
    /// Done, or the problem.
    Outcome() = default;
    Outcome(Problem problem) : state_(std::in_place_index<1>, std::move(problem)) {}  // NOLINT: meant to be implicit

    /// Whether it was done.
    explicit operator bool() const noexcept { return state_.index() == 0; }

    /// Throws std::bad_variant_access when it was done.
    const Problem& problem() const { return std::get<1>(state_); }

  private:
    std::variant<std::monostate, Problem> state_;
};

}  // namespace kestrav
