#include "base/utf8.h"

#include <cstdint>
#include <cstring>

namespace kestrav {
namespace {

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// The length of the well-formed sequence at `at`, which starts with a byte above 0x7f; 0 when it isn't one.
std::size_t sequenceLength(const unsigned char* at, std::size_t left) {
    const unsigned char lead = at[0];
    if (lead < 0xC2 || lead > 0xF4) return 0;
    if (left < 2 || !isContinuation(at[1])) return 0;
    if (lead < 0xE0) return 2;
    // The second byte is where overlong forms, surrogates and values above U+10FFFF show.
    if (lead == 0xE0 && at[1] < 0xA0) return 0;
    if (lead == 0xED && at[1] > 0x9F) return 0;
    if (left < 3 || !isContinuation(at[2])) return 0;
    if (lead < 0xF0) return 3;
    if (lead == 0xF0 && at[1] < 0x90) return 0;
    if (lead == 0xF4 && at[1] > 0x8F) return 0;
    return left >= 4 && isContinuation(at[3]) ? 4 : 0;
}

}  // namespace

std::size_t validUTF8SequenceLength(std::string_view text) noexcept {
    if (text.empty()) return 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    return bytes[0] < 0x80 ? 1 : sequenceLength(bytes, text.size());
}

std::size_t validUTF8Length(std::string_view text) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t at = 0;
    while (at < size) {
        // Nearly all text is ASCII, so eight bytes are judged at once.
        std::uint64_t word = kHighBits;
        if (size - at >= sizeof word) std::memcpy(&word, bytes + at, sizeof word);
        if ((word & kHighBits) == 0) {
            at += sizeof word;
        } else if (bytes[at] < 0x80) {
            ++at;
        } else {
            const std::size_t length = sequenceLength(bytes + at, size - at);
            if (length == 0) return at;
            at += length;
        }
    }
    return at;
}

std::string repairedUTF8(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t good = validUTF8Length(text);
        result += text.substr(0, good);
        if (good == text.size()) return result;
        result += "\xEF\xBF\xBD";
        text.remove_prefix(good + 1);
    }
}

}  // namespace kestrav
