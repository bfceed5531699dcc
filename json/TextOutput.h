#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "json/Tree.h"

namespace kestrav {

/// Where the writer puts its text: gathered in a small buffer, so that single characters cost little.
class TextOutput {
  public:
    void put(char c) {
        if (used_ == buffer_.size()) flush();
        buffer_[used_++] = c;
    }
    void put(std::string_view text);

    /// A quoted text; false when it isn't valid UTF-8.
    bool putText(std::string_view text);
    /// Null, a boolean, a number or a text; false when it has no form in JSON.
    bool putLeaf(const Tree& leaf);

    std::string take() {
        flush();
        return std::move(text_);
    }

  private:
    /// At least `size` free bytes of the buffer, of which `used_` has still to be moved on.
    char* room(std::size_t size) {
        if (buffer_.size() - used_ < size) flush();
        return buffer_.data() + used_;
    }
    void putEscaped(char c);
    bool putNumber(const Tree& leaf);
    void flush() {
        text_.append(buffer_.data(), used_);
        used_ = 0;
    }

    std::array<char, 4096> buffer_;
    std::size_t used_ = 0;
    std::string text_;
};

}  // namespace kestrav
