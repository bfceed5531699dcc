#include "services/disk/MountinfoLine.h"

#include <charconv>
#include <sys/sysmacros.h>

namespace kestrav {
namespace {

/// The next word, which is taken off the line; empty at its end.
std::string_view takeWord(std::string_view& line) {
    const std::size_t end = line.find(' ');
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    return word;
}

template <class Number>
bool isNumber(std::string_view text, Number& into) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), into);
    return error == std::errc() && end == text.data() + text.size();
}

std::optional<dev_t> deviceIn(std::string_view word) {
    const std::size_t colon = word.find(':');
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    if (colon == std::string_view::npos || !isNumber(word.substr(0, colon), majorNumber)) return std::nullopt;
    if (!isNumber(word.substr(colon + 1), minorNumber)) return std::nullopt;
    return makedev(majorNumber, minorNumber);
}

std::optional<std::uint64_t> groupIn(std::string_view word) {
    std::uint64_t group = 0;
    for (const std::string_view kind : {"shared:", "master:"}) {
        if (word.starts_with(kind) && isNumber(word.substr(kind.size()), group)) return group;
    }
    return std::nullopt;
}

}  // namespace

std::optional<MountinfoLine> MountinfoLine::parse(std::string_view line) {
    MountinfoLine mount;
    if (!isNumber(takeWord(line), mount.id) || !isNumber(takeWord(line), mount.parent)) return std::nullopt;
    const auto device = deviceIn(takeWord(line));
    if (!device) return std::nullopt;
    mount.device = *device;
    takeWord(line);  // the folder of the file system that is mounted
    mount.place = unescaped(takeWord(line));
    if (!mount.place.starts_with('/') || takeWord(line).empty()) return std::nullopt;
    while (!line.empty()) {
        const std::string_view word = takeWord(line);
        if (word == "-") return mount;
        if (const auto group = groupIn(word)) mount.groups.push_back(*group);
    }
    return std::nullopt;
}

std::string MountinfoLine::unescaped(std::string_view word) {
    std::string text;
    for (std::size_t at = 0; at < word.size(); ++at) {
        unsigned code = 0;
        const std::string_view digits = word.substr(at + 1, 3);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 8);
        const bool isEscape = word[at] == '\\' && digits.size() == 3 && error == std::errc() &&
                              end == digits.data() + digits.size() && code < 256;
        text += isEscape ? static_cast<char>(code) : word[at];
        if (isEscape) at += 3;
    }
    return text;
}

}  // namespace kestrav
