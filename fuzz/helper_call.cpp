// Calls of runWithCmd as they come over the bus. Of none is more kept than a request may be long, and what is
// understood of one is what it says: put together again it is the same, byte for byte.
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

std::string bodyOf(const CommandLine& asked) {
    std::string texts;
    for (const std::string& argument : asked.arguments)
        MessageBytes::append(texts, argument);
    std::string body;
    MessageBytes::append(body, asked.command);
    MessageBytes::append(body, static_cast<std::uint32_t>(texts.size()));
    return body + texts;
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
    receive(isBody ? MessageBytes{1, "sas", body}.whole() : std::string(bytes), [&](sd_bus_message* message) {
        const CallText call = readCall(message);
        checkLimits(call);
        if (isBody && call.isWhole && !call.trouble) require(bodyOf(call.asked) == body);
    });
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(data[0] % 2 != 0, {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
