#include "base/TcpTableLine.h"

#include <algorithm>
#include <charconv>

namespace kestrav {
namespace {

constexpr std::string_view kBlanks = " \t\n";

/// The next word, which is taken off the line; empty at its end.
std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

template <class Number>
bool isNumber(std::string_view text, Number& into, int base) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), into, base);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::optional<TcpTableLine> TcpTableLine::parse(std::string_view line) {
    TcpTableLine socket;
    takeWord(line);  // its number in the table
    socket.local = takeWord(line);
    socket.remote = takeWord(line);
    if (!isNumber(takeWord(line), socket.state, 16)) return std::nullopt;
    for (int skipped = 0; skipped < 3; ++skipped)  // queues, timer, repetitions
        takeWord(line);
    if (!isNumber(takeWord(line), socket.uid, 10)) return std::nullopt;
    takeWord(line);  // the time until it is probed
    if (!isNumber(takeWord(line), socket.inode, 10)) return std::nullopt;
    return socket;
}

}  // namespace kestrav
