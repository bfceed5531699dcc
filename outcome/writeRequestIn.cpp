#include "outcome/writeRequestIn.h"

#include <charconv>
#include <string_view>

namespace kestrav {
namespace {

std::string_view valueOf(std::string_view key, std::span<const std::string> arguments) {
    for (const std::string_view argument : arguments)
        if (argument.starts_with(key)) return argument.substr(key.size());
    return {};
}

}  // namespace

Request writeRequestIn(std::span<const std::string> arguments) {
    Request request{std::string(valueOf("of=/dev/r", arguments)), 0, 0, std::string(valueOf("if=", arguments))};
    const std::string_view block = valueOf("seek=", arguments);
    std::from_chars(block.data(), block.data() + block.size(), request.firstBlock);
    return request;
}

}  // namespace kestrav
