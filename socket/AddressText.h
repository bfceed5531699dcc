#pragma once

#include <algorithm>
#include <array>
#include <string>

namespace kestrav {

/// Room for the dotted text of an IPv4 address, filled with zeros because the functions write the text without a NUL.
class AddressText {
  public:
    /// Where 16 characters may be written.
    char* data() { return characters_.data(); }

    /// What stands in front of the first NUL. Dotted text is ASCII, so there is nothing to decode.
    std::string dotted() const {
        return {characters_.begin(), std::find(characters_.begin(), characters_.end(), '\0')};
    }

  private:
    std::array<char, 16> characters_{};
};

}  // namespace kestrav
