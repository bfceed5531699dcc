#pragma once

#include <cstdint>

#include "json/tree/TextMarks.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {

/// Whether a short text has bytes that can't be copied unseen: a control character, a quote, a backslash, or anything
/// beyond ASCII. What lies behind the text in its words is zeros and the form, and doesn't count.
constexpr bool hasMarksPlainly(const TreeWords& words) noexcept {
    constexpr std::uint64_t kOnes = 0x0101010101010101U;
    const auto marks = [](std::uint64_t word) {
        // The first byte that is marked is so rightly; those above it need not be.
        const std::uint64_t low =
            (word - kOnes * 0x20) | ((word ^ kOnes * '"') - kOnes) | ((word ^ kOnes * '\\') - kOnes);
        return ((low & ~word) | word) & (kOnes * 0x80);
    };
    const auto within = [](std::uint64_t bytes) {
        return bytes >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << 8 * bytes) - 1;
    };
    const std::uint64_t size = words.meta >> 60U;
    const std::uint64_t second = size <= 8 ? 0 : marks(words.meta) & within(size - 8);
    return ((marks(words.payload) & within(size)) | second) != 0;
}

#ifdef __SSE2__
inline bool hasMarks(const TreeWords& words) noexcept {
    return (TextMarks::at(reinterpret_cast<const char*>(&words)) & ((1U << (words.meta >> 60U)) - 1)) != 0;
}
#else
constexpr bool hasMarks(const TreeWords& words) noexcept {
    return hasMarksPlainly(words);
}
#endif

}  // namespace kestrav
