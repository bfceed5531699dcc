#include "services/helper/readCall.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "protocol/wire.h"

namespace kestrav {
namespace {

/// The updater sends four arguments at most.
constexpr std::size_t kMostArguments = 64;
/// Of a text that is too long, what a line of the log shows of it.
constexpr std::size_t kShown = 256;

Problem isTooLong() {
    return refused("the request is longer than 64 KiB.");
}

/// Takes a text that leads from `size` to at most the longest request.
bool take(const char* text, std::size_t& size, std::string& taken) {
    const std::size_t length = std::strlen(text) + 1;
    const bool fits = size + length <= kLongestRequest + 1;  // the command's end counts nothing
    taken.assign(text, fits ? length - 1 : std::min(length - 1, kShown));
    size += taken.size() + 1;
    return fits;
}

}  // namespace

CallText readCall(sd_bus_message* message) {
    CallText call;
    std::size_t count = 0;
    const char* text = nullptr;
    call.isWhole = sd_bus_message_read(message, "s", &text) > 0;
    if (!call.isWhole) return call;
    if (!take(text, call.size, call.asked.command)) call.trouble = isTooLong();
    int result = sd_bus_message_enter_container(message, 'a', "s");
    while (result > 0 && !call.trouble && (result = sd_bus_message_read(message, "s", &text)) > 0) {
        std::string argument;
        if (!take(text, call.size, argument)) call.trouble = isTooLong();
        ++count;
        if (count <= kMostArguments) call.asked.arguments.push_back(std::move(argument));
    }
    if (!call.trouble && count > kMostArguments) call.trouble = refused("the request has too many arguments.");
    call.isWhole = result >= 0;
    return call;
}

}  // namespace kestrav
