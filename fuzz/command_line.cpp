// A command line that passes the gate is one of the three shapes and nothing beside it: it can be put together again
// from what was understood, byte for byte. One that does not pass is refused in one harmless line.
//
// The input's lines are the command and its arguments.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/stopProcess.h"
#include "base/utf8.h"
#include "services/gate/PrivilegedRequest.h"
#include "services/gate/answerFor.h"

namespace kestrav {
namespace {

using Words = std::vector<std::string>;

Words wordsOf(std::string_view bytes) {
    Words words;
    while (true) {
        const std::size_t end = bytes.find('\n');
        words.emplace_back(bytes.substr(0, end));
        if (end == std::string_view::npos) return words;
        bytes.remove_prefix(end + 1);
    }
}

bool isPlainName(const std::string& name) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
    return !name.empty() && name.size() <= 32 && name.find_first_not_of(kPlain) == std::string::npos;
}

Words again(const UnmountRequest& request) {
    require(isPlainName(request.diskName) && request.node == "/dev/" + request.diskName + "s1");
    return {"umount", request.node};
}

Words again(const WriteRequest& request) {
    require(isPlainName(request.diskName) && request.node == "/dev/r" + request.diskName);
    require(request.imagePath.starts_with('/') && request.imagePath.find('\0') == std::string::npos);
    require(request.firstBlock <= INT64_MAX);
    return {"dd", "if=" + request.imagePath, "of=" + request.node, "seek=" + std::to_string(request.firstBlock),
            "bs=512"};
}

Words again(const ReadRequest& request) {
    require(isPlainName(request.diskName) && request.node == "/dev/r" + request.diskName);
    return {"dd", "if=" + request.node, "skip=" + std::to_string(request.firstBlock),
            "count=" + std::to_string(request.count)};
}

bool isHarmless(std::string_view line) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    return line.size() <= kLongestAnswer && isValidUTF8(line) && std::ranges::none_of(line, isControl) &&
           line.starts_with("Refused: ");
}

void check(std::string_view bytes) {
    const Words words = wordsOf(bytes);
    const auto request = parsePrivilegedRequest(words.front(), std::span(words).subspan(1));
    if (!request) return require(isHarmless(answerFor(request.problem())));
    require(std::visit([](const auto& one) { return again(one); }, request.value()) == words);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrav::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
