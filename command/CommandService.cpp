#include "command/CommandService.h"

#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <utility>
#include <vector>

#include "base/SystemLog.h"
#include "base/UniqueFd.h"
#include "base/shownText.h"
#include "base/stopProcess.h"
#include "base/utf8.h"
#include "command/AnswerSink.h"
#include "command/JobRequest.h"
#include "command/ServiceOwner.h"
#include "json/record/JSONRepresentation.h"
#include "json/tree/dataWithJSONObject.h"
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

/// Runs a step of the exchange; the error that it ended with, if it did.
template <typename Step>
std::optional<SocketError> errorOf(Step step) {
    try {
        step();
        return std::nullopt;
    } catch (const SocketException& exception) {
        return exception.error();
    }
}

/// The socket's error does not tell why there is no connection; another socket does.
bool lacksDescriptors() {
    const UniqueFd another(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return !another && (errno == EMFILE || errno == ENFILE);
}

Unanswered::Why whyNotConnected(SocketError error) {
    switch (error) {
        case SocketError::queryFailed:
            return Unanswered::Why::hostNotFound;
        case SocketError::connectionClosed:
            return lacksDescriptors() ? Unanswered::Why::noDescriptorLeft : Unanswered::Why::connectingFailed;
        case SocketError::connectionTimeout:
            return Unanswered::Why::notAcceptedInTime;
        case SocketError::unknownError:
            return Unanswered::Why::notAccepted;
    }
    stopProcess();
}

/// Why reading gave nothing. The socket's read does not tell a service that is silent from one that has gone; a look at
/// the connection does: of one that is silent nothing is known yet, or its first bytes have come only now.
Unanswered::Why whyNoReply(const TCPClient& client) {
    char first = 0;
    const ssize_t waiting = client.fd ? ::recv(*client.fd, &first, 1, MSG_PEEK | MSG_DONTWAIT) : 0;
    const bool open = waiting > 0 || (waiting < 0 && (errno == EAGAIN || errno == EWOULDBLOCK));
    return open ? Unanswered::Why::noReplyInTime : Unanswered::Why::closedWithoutAReply;
}

std::string_view textOf(const std::vector<std::byte>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

CommandService::CommandService(SystemLog& log, CommandEndpoint endpoint, AnswerSink* answers)
    : log_(log),
      endpoint_(std::move(endpoint)),
      answers_(answers) {}

// frozen: F26
std::string CommandService::runWithCommand(std::string_view command, std::span<const std::string> arguments) {
    if (answers_ != nullptr) answers_->asked(command, arguments);
    TCPClient client(endpoint_.address, endpoint_.port);
    if (!connect(client)) return "";
    const ServiceOwner owner(*client.fd);
    // After a failed send the connection is deliberately left open: a service that has read the front part of a request
    // must not see an orderly end after it.
    // frozen: F27
    // frozen: F30
    if (!send(client, requestText(command, arguments))) return "";
    receive(client, owner);
    return "";
}

bool CommandService::connect(TCPClient& client) {
    const auto error = errorOf([&] { client.connect(endpoint_.connectSeconds); });
    if (error) tell(whyNotConnected(*error), description(*error));
    return !error;
}

bool CommandService::send(TCPClient& client, std::string_view request) {
    const auto error = errorOf([&] { client.send(request); });
    if (error) tell(Unanswered::Why::notSent, description(*error));
    return !error;
}

void CommandService::receive(TCPClient& client, const ServiceOwner& owner) {
    // frozen: F28
    const auto reply = client.read(endpoint_.readLength, endpoint_.readSeconds);
    if (!reply) {
        const Unanswered::Why why = whyNoReply(client);
        client.close();
        return tell(why, "");
    }
    auto notOurs = owner.whyNotOurs();
    // frozen: F29
    if (isValidUTF8(textOf(*reply))) log_.write(textOf(*reply));
    client.close();
    if (answers_ == nullptr) return;
    if (notOurs) return answers_->unanswered({Unanswered::Why::notTheService, std::move(*notOurs)});
    answers_->answered(textOf(*reply));
}

void CommandService::tell(Unanswered::Why why, std::string sentence) {
    if (!sentence.empty()) log_.write(sentence);
    if (answers_ != nullptr) answers_->unanswered({why, std::move(sentence)});
}

void CommandService::runResponderWithResp(std::optional<std::string_view> resp) {
    // frozen: F31
    log_.write("Response: " + (resp ? "Optional(" + debugForm(*resp) + ")" : std::string("nil")));
}

}  // namespace kestrav
