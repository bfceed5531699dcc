#pragma once

#include <algorithm>
#include <array>
#include <string>

namespace kestrav {

/// Room for the dotted text of an IPv4 address, which the functions fill in without a NUL: start with zeros.
using AddressText = std::array<char, 16>;

/// What stands in front of the first NUL. Dotted text is ASCII, so there is nothing to decode.
inline std::string text(const AddressText& buffer) {
    return {buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0')};
}

}  // namespace kestrav
