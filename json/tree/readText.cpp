#include "json/tree/readText.h"

#include <bit>
#include <cstdint>

#include "json/tree/TextMarks.h"
#include "json/tree/scanText.h"

namespace kestrav {
namespace {

constexpr std::uint32_t kFirstLeading = 0xD800;
constexpr std::uint32_t kFirstTrailing = 0xDC00;
constexpr std::uint32_t kBehindTrailing = 0xE000;

void appendUTF8(std::string& text, std::uint32_t code) {
    const auto put = [&](std::uint32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (code < 0x80) return put(code);
    if (code < 0x800) {
        put(0xC0U | code >> 6U);
    } else {
        if (code < 0x10000) {
            put(0xE0U | code >> 12U);
        } else {
            put(0xF0U | code >> 18U);
            put(0x80U | (code >> 12U & 0x3FU));
        }
        put(0x80U | (code >> 6U & 0x3FU));
    }
    put(0x80U | (code & 0x3FU));
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Four hexadecimal digits; fails at the first byte that is none.
const char* readUnit(const char* at, const char* end, std::uint32_t& unit, ReadFailure& failure) {
    unit = 0;
    for (int digits = 0; digits < 4; ++digits, ++at) {
        if (at == end) return failure.incomplete(end);
        const int digit = hexDigit(*at);
        if (digit < 0) return failure.note("expected hex digit", at);
        unit = unit << 4U | static_cast<std::uint32_t>(digit);
    }
    return at;
}

/// What stands behind "\u": one unit, or two that are a pair of surrogates.
const char* readCode(const char* at, const char* end, std::string& text, ReadFailure& failure) {
    std::uint32_t code = 0;
    const char* next = readUnit(at, end, code, failure);
    if (next == nullptr) return nullptr;
    if (code >= kFirstLeading && code < kBehindTrailing) {
        if (code >= kFirstTrailing) return failure.note("illegal leading surrogate", at - 1);
        for (const char expected : {'\\', 'u'}) {
            if (next == end) return failure.incomplete(end);
            if (*next != expected) return failure.syntax(next);
            ++next;
        }
        const char* const second = next;
        std::uint32_t trailing = 0;
        next = readUnit(second, end, trailing, failure);
        if (next == nullptr) return nullptr;
        if (trailing < kFirstTrailing || trailing >= kBehindTrailing) {
            return failure.note("illegal trailing surrogate", second);
        }
        code = 0x10000 + ((code - kFirstLeading) << 10U) + (trailing - kFirstTrailing);
    }
    appendUTF8(text, code);
    return next;
}

/// What stands behind a backslash.
const char* readEscape(const char* at, const char* end, std::string& text, ReadFailure& failure) {
    if (at == end) return failure.incomplete(end);
    switch (*at) {
        case '"':
        case '\\':
        case '/':
            text += *at;
            return at + 1;
        case 'b':
            text += '\b';
            return at + 1;
        case 'f':
            text += '\f';
            return at + 1;
        case 'n':
            text += '\n';
            return at + 1;
        case 'r':
            text += '\r';
            return at + 1;
        case 't':
            text += '\t';
            return at + 1;
        case 'u':
            return readCode(at + 1, end, text, failure);
        default:
            return failure.syntax(at);
    }
}

/// Why a text ends neither at a quote nor goes on with an escape.
const char* failAt(const char* at, const char* end, ReadFailure& failure) {
    const auto byte = at == end ? 0U : static_cast<unsigned>(static_cast<unsigned char>(*at));
    // A sequence that the end of the document cuts off may have been a good one.
    const std::ptrdiff_t length = byte >= 0xF0 && byte < 0xF5   ? 4
                                  : byte >= 0xE0 && byte < 0xF0 ? 3
                                  : byte >= 0xC2                ? 2
                                                                : 1;
    const bool isCutOff = byte < 0xF5 && end - at < length;
    return isCutOff ? failure.incomplete(end) : failure.syntax(at);
}

/// The rest of a text from its first escape on, `begun` being what lies in front of it.
const char* readEscaped(std::string_view begun, const char* at, const char* end, std::string& text,
                        ReadFailure& failure) {
    text = begun;
    while (at != end && *at == '\\') {
        at = readEscape(at + 1, end, text, failure);
        if (at == nullptr) return nullptr;
        const char* const next = scanText(at, end);
        text.append(at, next);
        at = next;
    }
    if (at == end || *at != '"') return failAt(at, end, failure);
    return at + 1;
}

}  // namespace

const char* readText(const char* at, const char* end, TreeWords& words, NodeArena& arena, std::string& scratch,
                     ReadFailure& failure) {
    const char* from = at;
#ifdef __SSE2__
    if (end - at >= TextMarks::kBytes) {
        const unsigned marks = TextMarks::at(at);
        const auto size = static_cast<std::size_t>(std::countr_zero(marks));
        if (marks != 0 && at[size] == '"') {
            words = TextMarks::shortText(at, size);
            return at + size + 1;
        }
        if (marks == 0) from += TextMarks::kBytes;
    }
#endif
    const char* const stop = scanText(from, end);
    const std::string_view piece(at, static_cast<std::size_t>(stop - at));
    if (stop != end && *stop == '"') {
        words = TreeNodes::text(piece, &arena);
        return stop + 1;
    }
    const char* const behind = readEscaped(piece, stop, end, scratch, failure);
    if (behind != nullptr) words = TreeNodes::text(scratch, &arena);
    return behind;
}

}  // namespace kestrav
