#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

#include "base/UniqueFd.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {

/// The real kestrav-commandd in a process of its own, on a socket of a free port that is handed to it as systemd would
/// do. Ended with the object.
class CommandDaemon {
  public:
    struct Conditions {
        std::optional<int> handed;                 ///< the socket to hand over; -1 for none
        std::optional<std::uint64_t> descriptors;  ///< the most it may have
        std::optional<uid_t> uid;                  ///< the user that it runs as
        std::optional<int> errors = std::nullopt;  ///< where its standard error leads instead of into log()
        bool ignoresSignals = false;               ///< started with those ignored that end it and that tell of children
        bool withoutInputAndOutput = false;        ///< started with descriptors 0 and 1 closed
    };
    CommandDaemon() : CommandDaemon(Conditions{}) {}
    explicit CommandDaemon(const Conditions& conditions);
    ~CommandDaemon();
    CommandDaemon(const CommandDaemon&) = delete;
    CommandDaemon& operator=(const CommandDaemon&) = delete;

    std::uint16_t port() const { return port_; }
    pid_t pid() const { return pid_; }
    std::string log() const;
    /// The folder where it says how far a write is.
    std::filesystem::path board() const;

    void signal(int number) const;
    /// Waits up to a minute for its end; the exit status, 128 + the number of the signal that ended it, nothing when
    /// it runs on.
    std::optional<int> waitForEnd();
    bool runs();

  private:
    TemporaryFolder folder_;
    std::uint16_t port_ = 0;
    pid_t pid_ = -1;
    std::optional<int> ended_;
};

/// A loopback listener on a free port.
UniqueFd listenOnFreePort(std::uint16_t& port);

/// The other side of the wire.
class Client {
  public:
    explicit Client(std::uint16_t port);

    int socket() const { return socket_.get(); }
    /// False when the service has closed the connection.
    bool send(std::string_view bytes) const;
    /// What one read brings, within `seconds`; empty when nothing came or the connection was closed.
    std::string readOnce(int seconds = 20) const;
    void finishSending() const;
    void close() { socket_.reset(); }

  private:
    UniqueFd socket_;
};

/// {"command":...,"arguments":[...]}; the texts must not need escapes.
std::string requestFor(std::string_view command, const std::vector<std::string>& arguments);

/// One whole exchange, as the updater does it.
std::string ask(std::uint16_t port, std::string_view command, const std::vector<std::string>& arguments);

}  // namespace kestrav
