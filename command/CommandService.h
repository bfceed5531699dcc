#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kestrav {

class SystemLog;

/// Where the local command service listens and how long it may take. The values are those that every part of the
/// system has built in; only tests give others.
struct CommandEndpoint {
    std::string address = "127.0.0.1";
    std::int32_t port = 9090;
    std::int64_t connectSeconds = 10;  ///< time for the connection to be accepted
    std::int64_t readLength = 10240;   ///< bytes of a reply that are read at most; the rest is cut off
    std::int64_t readSeconds = 60;     ///< time for the reply to begin
};

/// The client of the local command service: one JSON request and at most one reply per TCP connection.
///
/// Every call makes its own connection and keeps nothing, so calls may run on several threads at once as far as
/// `log` allows it. What the service answers, and what went wrong, goes to `log` alone: callers learn nothing.
class CommandService {
  public:
    /// `log` is not owned and outlives this object.
    explicit CommandService(SystemLog& log, CommandEndpoint endpoint = {});

    /// Has the service run `command` with `arguments`, each one element without any shell quoting, and waits for its
    /// reply, at most `connectSeconds` + `readSeconds`. Always returns the empty text.
    /// Stops the process when the request can't be written as JSON, that is when a text is not valid UTF-8.
    std::string runWithCommand(std::string_view command, std::span<const std::string> arguments);

    /// Logs a reply in its debug form: `Response: Optional("text")`, or `Response: nil` when there is none.
    void runResponderWithResp(std::optional<std::string_view> resp);

  private:
    SystemLog& log_;
    CommandEndpoint endpoint_;
};

}  // namespace kestrav
