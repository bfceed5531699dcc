#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "json/tree/Tree.h"

namespace kestrav {

/// What a member is called while a value is walked: the key of a dictionary's member, or the position of an array's
/// element, which reads as its decimal digits. Made without a copy of the key, so it lasts as long as the value that
/// is walked stays unchanged.
class JSONMemberKey {
  public:
    /// The key of a dictionary's member: a text.
    explicit JSONMemberKey(const Tree& name) noexcept : name_(&name) {}
    /// The position of an array's element.
    explicit JSONMemberKey(std::size_t position) noexcept : position_(position) {}

    /// The key, or the position in decimal.
    std::string string() const { return name_ == nullptr ? std::to_string(position_) : std::string(name()); }
    /// The same, where a text is wanted.
    operator std::string() const { return string(); }  // NOLINT(google-explicit-constructor): it stands for the text
    /// The key of a dictionary's member; the empty text for an element of an array.
    std::string_view name() const noexcept { return name_ == nullptr ? std::string_view() : *name_->text(); }
    /// The position of an array's element; 0 for a member of a dictionary.
    std::size_t position() const noexcept { return position_; }

    /// Whether it reads as that text.
    friend bool operator==(const JSONMemberKey& key, std::string_view text) {
        return key.name_ == nullptr ? key.string() == text : key.name() == text;
    }

  private:
    const Tree* name_ = nullptr;  // null for a position
    std::size_t position_ = 0;
};

}  // namespace kestrav
