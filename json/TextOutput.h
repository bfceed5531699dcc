#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "json/TreeNodes.h"

namespace kestrav {

/// Where the writer puts its text: a string that is always a good deal longer than what was written, so that most of
/// the time one comparison says that there is room. Kept open for the compiler to draw into the writer's loop.
class TextOutput {
  public:
    /// Makes room in advance for about that much.
    void reserve(std::size_t size) { room(size + size / 8); }

    void put(char c) {
        *room(1) = c;
        ++at_;
    }
    void put(std::string_view text) {
        std::memcpy(room(text.size()), text.data(), text.size());
        at_ += text.size();
    }

    /// A quoted text; false when it isn't valid UTF-8.
    bool putText(const Tree& text);
    /// Null, a boolean or a number; false for everything else and for numbers that have no form in JSON.
    bool putLeaf(const Tree& leaf);

    std::string take();

  private:
    /// At least `size` free bytes, of which those that are used have still to be counted.
    char* room(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) grow(size);
        return at_;
    }
    void grow(std::size_t size);
    bool putShortText(TreeWords words);
    bool putLongText(std::string_view text);
    void putEscaped(char c);

    std::string text_;
    char* at_ = nullptr;
    char* end_ = nullptr;
};

}  // namespace kestrav
