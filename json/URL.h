#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav {

/// A well-formed URL or relative reference (RFC 3986). A plain value.
class URL {
  public:
    /// Nothing when `text` is empty or not a URL.
    static std::optional<URL> parse(std::string_view text);

    const std::string& absoluteString() const noexcept { return text_; }

    friend bool operator==(const URL&, const URL&) = default;

  private:
    explicit URL(std::string_view text) : text_(text) {}

    std::string text_;
};

/// `text` with every byte percent-encoded that may not stand in the query of a URL, percent signs included. Nothing
/// when `text` is not valid UTF-8.
std::optional<std::string> percentEncodedForQuery(std::string_view text);

}  // namespace kestrav
