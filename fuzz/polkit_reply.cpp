// polkit's answers as they come over the bus. Consent is nothing but a plain yes: an answer of the right form whose
// first value is not 0. What keeps it from being one is said in one harmless line.
//
// The input's first byte says what the rest is. 0: a whole message. 1: the body of an answer of the right form. 2: that
// of an error. Else the length of a signature, and behind that an answer's body.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/stopProcess.h"
#include "base/utf8.h"
#include "fuzz/ArrivingMessage.h"
#include "services/asker/polkitAnswer.h"
#include "services/gate/answerFor.h"

namespace kestrav {
namespace {

constexpr const char* kForm = "(bba{ss})";

MessageBytes messageOf(std::uint8_t what, std::string_view bytes) {
    if (what == 1) return {2, kForm, std::string(bytes)};
    if (what == 2) return {3, "s", std::string(bytes)};
    const std::size_t length = std::min<std::size_t>(what, bytes.size());
    return {2, std::string(bytes.substr(0, length)), std::string(bytes.substr(length))};
}

void checkRefusal(const Problem& problem) {
    const std::string line = answerFor(problem);
    require(problem.kind == Problem::Kind::refused && isValidUTF8(line) && line.size() <= kLongestAnswer);
    require(std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }));
}

void check(std::uint8_t what, std::string_view bytes) {
    const MessageBytes message = what == 0 ? MessageBytes{} : messageOf(what, bytes);
    const auto take = [&](sd_bus_message* arrived) {
        const auto answer = polkitAnswer(arrived);
        if (!answer) return checkRefusal(answer.problem());
        if (what == 0) return require(sd_bus_message_is_method_error(arrived, nullptr) == 0);
        const bool saysYes = message.body.size() >= 4 && !message.body.starts_with(std::string(4, '\0'));
        require(message.kind == 2 && message.signature.starts_with(kForm) && saysYes);
    };
    what == 0 ? receive(bytes, take) : receive(message, take);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
