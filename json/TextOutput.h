#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "json/TreeNodes.h"

namespace kestrav {

/// Where the writer puts its text: in blocks that grow, put together at the end, so that nothing that was written is
/// moved more than once. Kept open for the compiler to draw into the writer's loop.
class TextOutput {
  public:
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
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t used;
    };

    /// At least `size` free bytes, of which those that are used have still to be counted.
    char* room(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) newBlock(size);
        return at_;
    }
    void newBlock(std::size_t size);
    void closeBlock();
    bool putShortText(TreeWords words);
    bool putLongText(std::string_view text);
    void putEscaped(char c);

    std::vector<Block> blocks_;
    char* at_ = nullptr;
    char* end_ = nullptr;
};

}  // namespace kestrav
