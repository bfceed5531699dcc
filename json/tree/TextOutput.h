#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "json/tree/hasMarks.h"
#include "json/tree/writeNumber.h"

namespace kestrav {

/// Where the writer puts its text: pieces of memory, the first of them in place, which become one string at the end. So
/// each byte is copied once, and nobody has to walk the tree in advance to guess how many there will be. Kept open for
/// the compiler to draw into the writer's loop.
class TextOutput {
  public:
    TextOutput() = default;
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    void put(char c) {
        *room(1) = c;
        ++at_;
    }
    void put(std::string_view text) {
        if (text.size() > kFewestRoom) return putLarge(text);
        std::memcpy(room(text.size()), text.data(), text.size());
        at_ += text.size();
    }

    /// A quoted text; false when it isn't valid UTF-8.
    bool putText(const Tree& text) {
        const TreeWords words = TreeNodes::words(text);
        if (TreeNodes::isShortText(words) && !hasMarks(words)) {
            putPlain(words);
            return true;
        }
        return putLongText(TreeNodes::textView(text));
    }
    /// Null, a boolean or a number; false for everything else and for numbers that have no form in JSON.
    bool putLeaf(const Tree& leaf) {
        const TreeWords words = TreeNodes::words(leaf);
        switch (TreeNodes::form(leaf)) {
            case TreeNodes::Form::integer:
                at_ = writeNumber(static_cast<std::int64_t>(words.payload), room(kNumberText));
                return true;
            case TreeNodes::Form::floating: {
                const auto value = std::bit_cast<double>(words.payload);
                if (!std::isfinite(value)) return false;
                at_ = writeNumber(value, room(kNumberText));
                return true;
            }
            case TreeNodes::Form::null:
            case TreeNodes::Form::boolean:
            case TreeNodes::Form::unsignedInteger:
            case TreeNodes::Form::decimal:
            case TreeNodes::Form::shortText:
            case TreeNodes::Form::longText:
            case TreeNodes::Form::list:
            case TreeNodes::Form::map:
            case TreeNodes::Form::object:
                return putRareLeaf(leaf);
        }
        return false;
    }

    std::string take();

  private:
    static constexpr std::size_t kFewestRoom = std::size_t{4} << 10U;
    static constexpr std::size_t kMostRoom = std::size_t{64} << 10U;

    /// At least `size` free bytes, of which those that are used have still to be counted. No more than the first room.
    char* room(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) makeRoom(nextRoom_ = std::min(kMostRoom, 2 * nextRoom_));
        return at_;
    }
    void makeRoom(std::size_t size);
    void putLarge(std::string_view text);
    /// A short text that can be copied unseen, as it lies in its two words, all of it at once.
    void putPlain(TreeWords words) {
        const std::size_t size = words.meta >> 60U;
        char* to = room(sizeof words + 2);
        *to = '"';
        std::memcpy(to + 1, &words, sizeof words);
        to[size + 1] = '"';
        at_ += size + 2;
    }
    bool putLongText(std::string_view text);
    void putEscaped(char c);
    bool putRareLeaf(const Tree& leaf);

    std::array<char, kFewestRoom> first_;  // not cleared: what lies behind at_ is never read
    char* begin_ = first_.data();          // of the piece that is being filled
    char* at_ = begin_;
    char* end_ = begin_ + first_.size();
    std::size_t nextRoom_ = kFewestRoom;
    std::vector<std::unique_ptr<char[]>> rooms_;
    std::vector<std::string_view> pieces_;  // those that are full
};

}  // namespace kestrav
