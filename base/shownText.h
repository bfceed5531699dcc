#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kestrav {

/// Whether the character makes a line read as another one than it is: control characters, marks that turn the direction
/// of writing, ends of lines and paragraphs, and what can't be seen at all. The joiners U+200C and U+200D and the
/// selectors of variants are not among them: whole scripts can't be written without.
bool misleadsInALine(char32_t character) noexcept;

/// `text` from outside, fit to stand in an answer or a log line: control characters (C0, DEL and C1) as \xNN, others
/// that mislead as \u{N}, a backslash as two, so that an escape is never mistaken for text, bytes that are not UTF-8 as
/// U+FFFD; and cut with "..." where it would be longer than `bytes`, never within a character.
std::string shownText(std::string_view text, std::size_t bytes = 300);

/// A whole sentence, in which what came from outside is shownText() already: the same, but backslashes stay as they
/// are.
std::string shownSentence(std::string_view sentence, std::size_t bytes);

/// `text` for one line on a terminal, with nothing of it lost: the bytes of control characters (U+0000 to U+001F,
/// U+007F to U+009F), and bytes that are not well-formed UTF-8, are written as \xNN, others that mislead as \u{N}, a
/// backslash as two.
std::string escapedForTerminal(std::string_view text);

/// `text` in double quotes as it would stand in source code: quotes, backslashes, tabs, line ends and NUL behind a
/// backslash, the other control characters of ASCII as \u{NN}; all other bytes as they are.
std::string debugForm(std::string_view text);

/// Each byte as two digits from 0 to f.
std::string hexadecimal(std::string_view bytes);

}  // namespace kestrav
