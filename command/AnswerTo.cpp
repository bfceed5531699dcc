#include "command/AnswerTo.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "protocol/accessory.h"

namespace kestrav {
namespace {

constexpr std::string_view kCount = "count=";
constexpr std::string_view kOutput = "of=";

const std::string* argumentWith(std::string_view key, std::span<const std::string> arguments) {
    const auto found =
        std::ranges::find_if(arguments, [key](const std::string& argument) { return argument.starts_with(key); });
    return found == arguments.end() ? nullptr : &*found;
}

std::uint64_t bytesOfBlocks(std::string_view digits) {
    constexpr std::uint64_t kBlock = kBlockBytes;
    std::uint64_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    return whole && count <= std::numeric_limits<std::uint64_t>::max() / kBlock ? count * kBlock : 0;
}

}  // namespace

AnswerTo AnswerTo::of(std::string_view command, std::span<const std::string> arguments) {
    if (command == "umount") return {Kind::unmount, 0};
    if (command != "dd") return {Kind::other, 0};
    if (argumentWith(kOutput, arguments) != nullptr) return {Kind::write, 0};
    const std::string* count = argumentWith(kCount, arguments);
    if (count == nullptr) return {Kind::other, 0};
    return {Kind::read, bytesOfBlocks(std::string_view(*count).substr(kCount.size()))};
}

}  // namespace kestrav
