#pragma once

#ifdef __SSE2__
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "json/tree/TreeNodes.h"

namespace kestrav {

/// Sixteen bytes of a JSON text at once. Only where the processor has SSE2; scanText.h has a plain twin for the others.
class TextMarks {
  public:
    static constexpr int kBytes = 16;

    /// One bit for each byte, the first one's lowest: set where a text can't be copied unseen, which is at a quote, a
    /// backslash, a control character and everything beyond ASCII.
    static unsigned at(const char* from) noexcept { return marksOf(load(from)); }

    /// Set at white space.
    static unsigned spacesAt(const char* from) noexcept {
        const __m128i bytes = load(from);
        const __m128i blank = _mm_or_si128(equal(bytes, ' '), equal(bytes, '\n'));
        return mask(_mm_or_si128(blank, _mm_or_si128(equal(bytes, '\t'), equal(bytes, '\r'))));
    }

    /// The words of the short text of the first `size` bytes, fewer than all sixteen.
    static TreeWords shortText(const char* from, std::size_t size) noexcept {
        static constexpr std::uint8_t kKept[2 * kBytes] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                           0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
        const __m128i kept = load(reinterpret_cast<const char*>(kKept) + kBytes - size);
        TreeWords words;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&words), _mm_and_si128(load(from), kept));
        words.meta |= TreeNodes::shortTextMeta(size);
        return words;
    }

  private:
    static __m128i load(const char* from) noexcept { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
    static __m128i equal(__m128i bytes, char c) noexcept { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); }
    static unsigned mask(__m128i bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }
    static unsigned marksOf(__m128i bytes) noexcept {
        // As signed bytes, whatever lies beyond ASCII is below the control characters.
        const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
        return mask(_mm_or_si128(low, _mm_or_si128(equal(bytes, '"'), equal(bytes, '\\'))));
    }
};

}  // namespace kestrav
#endif
