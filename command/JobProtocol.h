#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace kestrav {

/// The helper's one operation, as it is seen through a connection: run a command line as root.
class JobProtocol {
  public:
    /// Takes what the helper answered. Called at most once, on the connection's own thread.
    using Reply = std::function<void(std::string text)>;

    virtual ~JobProtocol() = default;

    /// Sends `cmd` with `arguments`, each one element without any shell quoting, and returns at once.
    virtual void runWithCmd(std::string_view cmd, std::span<const std::string> arguments, Reply withReply) = 0;
};

}  // namespace kestrav
