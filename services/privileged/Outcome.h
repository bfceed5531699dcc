#pragma once

#include <string>
#include <utility>
#include <variant>

namespace kestrav {

/// Why a request was not carried out, in words that its sender understands.
struct Problem {
    enum class Kind {
        refused,  ///< nothing was done
        failed,   ///< something was begun and went wrong
    };
    Kind kind;
    std::string sentence;
};

/// The value of an operation, or the problem that kept it from having one.
template <class T>
class Outcome {
  public:
    Outcome(T value) : state_(std::in_place_index<0>, std::move(value)) {}            // NOLINT: meant to be implicit
    Outcome(Problem problem) : state_(std::in_place_index<1>, std::move(problem)) {}  // NOLINT: meant to be implicit

    explicit operator bool() const noexcept { return state_.index() == 0; }

    /// Throws std::bad_variant_access when there is no value, problem() when there is one.
    T& value() { return std::get<0>(state_); }
    const T& value() const { return std::get<0>(state_); }
    const Problem& problem() const { return std::get<1>(state_); }

  private:
    std::variant<T, Problem> state_;
};

inline Problem refused(std::string sentence) {
    return {Problem::Kind::refused, std::move(sentence)};
}

inline Problem failed(std::string sentence) {
    return {Problem::Kind::failed, std::move(sentence)};
}

}  // namespace kestrav
