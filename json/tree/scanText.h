#pragma once

namespace kestrav {

/// The first byte from `at` on that ends a piece of a JSON text or can't be part of it: a quote, a backslash, a control
/// character, the first byte of a sequence that isn't well-formed UTF-8, or `end`.
const char* scanText(const char* at, const char* end) noexcept;

/// The same, byte by byte: what a processor without vectors uses.
const char* scanTextPlainly(const char* at, const char* end) noexcept;

/// The first byte that is no white space of JSON, or `end`.
const char* scanSpace(const char* at, const char* end) noexcept;
const char* scanSpacePlainly(const char* at, const char* end) noexcept;

}  // namespace kestrav
