#include "command/CommandService.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "base/SystemLog.h"
#include "base/stopProcess.h"
#include "base/utf8.h"
#include "command/JobRequest.h"
#include "json/Writer.h"
#include "socket/SocketError.h"
#include "socket/TCPClient.h"

namespace kestrav {
namespace {

// noexcept: a request that the writer gives up on ends the process here, before half of it is sent.
std::string requestText(std::string_view command, std::span<const std::string> arguments) noexcept {
    const JobRequest request{std::string(command), {arguments.begin(), arguments.end()}};
    const Tree object = JSONRepresentation(request);
    require(isValidJSONObject(object));
    std::string text = dataWithJSONObject(object);
    require(isValidUTF8(text));
    return text;
}

/// Runs a step of the exchange; whether it went well. If not, the log has the reason.
template <typename Step>
bool succeeds(SystemLog& log, Step step) {
    try {
        step();
        return true;
    } catch (const SocketException& exception) {
        log.write(exception.what());
        return false;
    }
}

void logReply(SystemLog& log, const std::vector<std::byte>& reply) {
    const std::string_view text(reinterpret_cast<const char*>(reply.data()), reply.size());
    if (isValidUTF8(text)) log.write(text);
}

void appendEscaped(std::string& shown, char c) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr std::string_view special("\"'\\\t\n\r\0", 7);
    constexpr std::string_view letters = "\"'\\tnr0";
    const auto byte = static_cast<unsigned char>(c);
    if (const std::size_t at = special.find(c); at != std::string_view::npos) {
        shown += {'\\', letters[at]};
    } else if (byte < 0x20 || byte == 0x7f) {
        shown += {'\\', 'u', '{', digits[byte >> 4U], digits[byte & 15U], '}'};
    } else {
        shown += c;
    }
}

/// The text as it would stand in source code, in double quotes.
std::string debugForm(std::string_view text) {
    std::string shown = "\"";
    for (const char c : text)
        appendEscaped(shown, c);
    return shown + '"';
}

}  // namespace

CommandService::CommandService(SystemLog& log, CommandEndpoint endpoint) : log_(log), endpoint_(std::move(endpoint)) {}

std::string CommandService::runWithCommand(std::string_view command, std::span<const std::string> arguments) {
    TCPClient client(endpoint_.address, endpoint_.port);
    if (!succeeds(log_, [&] { client.connect(endpoint_.connectSeconds); })) return "";

    // After a failed send the connection is deliberately left open: a service that has read the front part of a request
    // must not see an orderly end after it.
    const std::string request = requestText(command, arguments);
    if (!succeeds(log_, [&] { client.send(request); })) return "";

    const std::optional<std::vector<std::byte>> reply = client.read(endpoint_.readLength, endpoint_.readSeconds);
    if (reply) logReply(log_, *reply);
    client.close();
    return "";
}

void CommandService::runResponderWithResp(std::optional<std::string_view> resp) {
    log_.write("Response: " + (resp ? "Optional(" + debugForm(*resp) + ")" : std::string("nil")));
}

}  // namespace kestrav
