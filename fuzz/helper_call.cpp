// Calls of runWithCmd as they come over the bus. Of none is more kept than a request may be long, and what is
// understood of one is what it says: its texts stand there, one behind the other.
//
// The input's first byte says what the rest is: even, a whole message; odd, the body of a call with a text and a list
// of texts.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/stopProcess.h"
#include "fuzz/ArrivingMessage.h"
#include "protocol/wire.h"
#include "services/helper/readCall.h"

namespace kestrav {
namespace {

constexpr std::size_t kShown = 256;  // of a text that is too long

/// Whether that text stands at `at` of a body, which is then behind it.
bool stands(std::string_view body, std::size_t& at, const std::string& text) {
    at = (at + 3) / 4 * 4;
    std::string expected;
    MessageBytes::append(expected, text);
    const bool does = at <= body.size() && body.substr(at).starts_with(expected);
    at += expected.size();
    return does;
}

void checkTexts(std::string_view body, const CommandLine& asked) {
    std::size_t at = 0;
    require(stands(body, at, asked.command));
    at = (at + 3) / 4 * 4 + 4;  // the length of the list
    for (const std::string& argument : asked.arguments)
        require(stands(body, at, argument));
}

void checkLimits(const CallText& call) {
    std::size_t bytes = call.asked.command.size() + 1;
    for (const std::string& argument : call.asked.arguments)
        bytes += argument.size() + 1;
    require(call.asked.arguments.size() <= 64);
    require(bytes <= kLongestRequest + kShown + 2);
}

void check(bool isBody, std::string_view bytes) {
    const std::string body(isBody ? bytes : std::string_view());
    const auto take = [&](sd_bus_message* message) {
        const CallText call = readCall(message);
        checkLimits(call);
        if (isBody && call.isWhole && !call.trouble) checkTexts(body, call.asked);
    };
    isBody ? receive(MessageBytes{1, "sas", body}, take) : receive(bytes, take);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(data[0] % 2 != 0, {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
