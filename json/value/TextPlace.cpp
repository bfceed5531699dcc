#include "json/value/TextPlace.h"

#include <algorithm>

namespace kestrav::json {

TextPlace TextPlace::of(std::string_view text, std::size_t offset) noexcept {
    TextPlace place{std::min(offset, text.size())};
    for (std::size_t at = 0; at < place.offset; ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const bool isHalfOfLineEnd = byte == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
        if (byte == '\n' || (byte == '\r' && !isHalfOfLineEnd)) {
            ++place.line;
            place.column = 1;
        } else if ((byte & 0xC0U) != 0x80U) {  // the further bytes of a character don't count
            ++place.column;
        }
    }
    return place;
}

}  // namespace kestrav::json
