#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "command/Unanswered.h"
#include "protocol/wire.h"

namespace kestrav {

class AnswerSink;
class ServiceOwner;
class SystemLog;
class TCPClient;

/// Where the local command service listens and how long it may take. The values are those that every part of the
/// system has built in; only tests give others.
struct CommandEndpoint {
    std::string address = kServiceAddress;  ///< dotted, or a host name
    std::int32_t port = kServicePort;       ///< of TCP
    std::int64_t connectSeconds = 10;       ///< time for the connection to be accepted
    std::int64_t readLength = kReplyRoom;   ///< bytes of a reply that are read at most; the rest is cut off
    std::int64_t readSeconds = 60;          ///< time for the reply to begin
};

/// The client of the local command service: one JSON request and at most one reply per TCP connection.
///
/// Every call makes its own connection and keeps nothing, so calls may run on several threads at once as far as
/// `log` and `answers` allow it. What the service answers, and what went wrong, goes to these two alone: callers learn
/// nothing.
class CommandService {
  public:
    /// `log` and `answers` are not owned and outlive this object. Without `answers` nobody listens.
    explicit CommandService(SystemLog& log, CommandEndpoint endpoint = {}, AnswerSink* answers = nullptr);

    /// Has the service run `command` with `arguments`, each one element without any shell quoting. Waits at most
    /// `connectSeconds` for the connection and at most `readSeconds` for the reply. Sending has no limit of its own: a
    /// request goes into the connection's memory at once, but one of megabytes waits as long as its reader does.
    /// Always returns the empty text.
    /// Stops the process when the request can't be written as JSON, that is when a text is not valid UTF-8.
    std::string runWithCommand(std::string_view command, std::span<const std::string> arguments);

    /// Logs a reply in its debug form: `Response: Optional("text")`, or `Response: nil` when there is none.
    void runResponderWithResp(std::optional<std::string_view> resp);

  private:
    bool connect(TCPClient& client);
    bool send(TCPClient& client, std::string_view request);
    void receive(TCPClient& client, const ServiceOwner& owner);
    void tell(Unanswered::Why why, std::string sentence);

    SystemLog& log_;
    CommandEndpoint endpoint_;
    AnswerSink* answers_;
};

}  // namespace kestrav
