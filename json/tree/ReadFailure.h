#pragma once

#include <string_view>

namespace kestrav {

/// Why reading ended, and where. `what` is empty as long as nothing is wrong.
struct ReadFailure {
    std::string_view what;
    const char* at = nullptr;

    /// Notes the first failure; a null pointer, which a reading function returns in place of where it got to.
    const char* note(std::string_view message, const char* where) noexcept {
        what = message;
        at = where;
        return nullptr;
    }
    const char* syntax(const char* where) noexcept { return note("syntax error", where); }
    const char* incomplete(const char* end) noexcept { return note("incomplete JSON", end); }
};

}  // namespace kestrav
