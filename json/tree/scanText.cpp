#include "json/tree/scanText.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "base/utf8.h"
#include "json/tree/TextMarks.h"

namespace kestrav {
namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

bool isPlain(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

/// The length of the well-formed UTF-8 sequence of two to four bytes at `at`; 0 when there is none.
inline std::size_t sequenceLength(const char* at, const char* end) {
    std::uint32_t word = 0;
    if (end - at < static_cast<std::ptrdiff_t>(sizeof word)) {
        return validUTF8SequenceLength({at, static_cast<std::size_t>(end - at)});
    }
    std::memcpy(&word, at, sizeof word);
    // Three bytes first: what most scripts beyond Latin ones take. The second test of each is for the shortest form,
    // the third for surrogates and what lies beyond U+10FFFF.
    if ((word & 0xC0C0F0U) == 0x8080E0U) {
        return (word & 0x200FU) != 0 && (word & 0x200FU) != 0x200DU ? 3 : 0;
    }
    if ((word & 0xC0E0U) == 0x80C0U) return (word & 0x1EU) != 0 ? 2 : 0;
    if ((word & 0xC0C0C0F8U) != 0x808080F0U) return 0;
    const bool isBeyond = (word & 0x04U) != 0 && (word & 0x3003U) != 0;
    return (word & 0x3007U) != 0 && !isBeyond ? 4 : 0;
}

/// Past as many sequences of more than one byte as follow each other.
const char* skipSequences(const char* at, const char* end) {
    while (at != end && static_cast<unsigned char>(*at) >= 0x80) {
        const std::size_t length = sequenceLength(at, end);
        if (length == 0) break;
        at += length;
    }
    return at;
}

}  // namespace

const char* scanTextPlainly(const char* at, const char* end) noexcept {
    while (at != end) {
        if (isPlain(*at)) {
            ++at;
            continue;
        }
        const char* const next = skipSequences(at, end);
        if (next == at) return at;
        at = next;
    }
    return at;
}

const char* scanSpacePlainly(const char* at, const char* end) noexcept {
    while (at != end && isSpace(*at))
        ++at;
    return at;
}

#ifdef __SSE2__
namespace {

/// The end of a text that has sixteen bytes at least: its last sixteen are looked at once more.
unsigned lastMarks(const char* at, const char* end) {
    const auto seen = static_cast<unsigned>(TextMarks::kBytes - (end - at));
    return TextMarks::at(end - TextMarks::kBytes) >> seen;
}

}  // namespace

const char* scanText(const char* at, const char* end) noexcept {
    if (end - at < TextMarks::kBytes) return scanTextPlainly(at, end);
    while (at != end) {
        const bool isLast = end - at < TextMarks::kBytes;
        const unsigned marks = isLast ? lastMarks(at, end) : TextMarks::at(at);
        if (marks == 0) {
            at = isLast ? end : at + TextMarks::kBytes;
            continue;
        }
        at += std::countr_zero(marks);
        const char* const next = skipSequences(at, end);
        if (next == at) return at;
        at = next;
    }
    return at;
}

const char* scanSpace(const char* at, const char* end) noexcept {
    constexpr unsigned kAll = (1U << TextMarks::kBytes) - 1;
    while (end - at >= TextMarks::kBytes) {
        const unsigned spaces = TextMarks::spacesAt(at);
        if (spaces != kAll) return at + std::countr_one(spaces);
        at += TextMarks::kBytes;
    }
    return scanSpacePlainly(at, end);
}
#else
const char* scanText(const char* at, const char* end) noexcept {
    return scanTextPlainly(at, end);
}

const char* scanSpace(const char* at, const char* end) noexcept {
    return scanSpacePlainly(at, end);
}
#endif

}  // namespace kestrav
