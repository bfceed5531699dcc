#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav::json {

/// A well-formed URL or relative reference (RFC 3986). A plain value.
class URL {
  public:
    /// Nothing when `text` is empty or not a URL.
    static std::optional<URL> parse(std::string_view text);

    /// The text that it was made from.
    const std::string& absoluteString() const noexcept { return text_; }

    /// Equal when their texts are.
    friend bool operator==(const URL&, const URL&) = default;

  private:
    explicit URL(std::string_view text) : text_(text) {}

    std::string text_;
};

}  // namespace kestrav::json
