#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "base/UniqueFd.h"

namespace kestrav {

/// One connection as a behaviour sees it. Waits end early when the service is being destroyed.
class LoopbackConnection {
  public:
    using Recorder = std::function<void(const std::string& request)>;

    LoopbackConnection(int fd, int stop, Recorder record) : fd_(fd), stop_(stop), record_(std::move(record)) {}

    /// Takes what has arrived when the first JSON object is complete, or when the peer stops sending, records it and
    /// returns it.
    std::string receiveRequest();
    /// Takes one byte of the request and no more.
    void receiveFirstByte();
    void send(std::string_view bytes);
    void pause(std::chrono::milliseconds time);
    void waitUntilPeerCloses();
    /// Makes the closing that follows a reset instead of an orderly end.
    void resetOnClose();

  private:
    bool readable(int milliseconds);

    int fd_;
    int stop_;
    Recorder record_;
};

/// What the service does with one connection, which is closed after that.
using LoopbackBehaviour = std::function<void(LoopbackConnection&)>;

/// Takes the request, then answers with `text`. An empty text is no answer at all.
LoopbackBehaviour answers(std::string text);
/// Takes the request, then sends the pieces one by one with a pause between two.
LoopbackBehaviour answersInPieces(std::vector<std::string> pieces, std::chrono::milliseconds pause);
/// Takes the request and then keeps silent until the peer gives up.
LoopbackBehaviour neverAnswers();
/// Closes the connection as soon as it is made.
LoopbackBehaviour closesAtOnce();
/// Resets the connection when the first byte of the request is there.
LoopbackBehaviour resetsInMidRequest();

/// A command service for tests: a real listener on 127.0.0.1, one thread for each connection, none of it shared
/// with the code under test. Ends its threads and closes everything when destroyed.
class LoopbackService {
  public:
    /// Port 0 lets the system choose.
    explicit LoopbackService(LoopbackBehaviour behaviour = answers("done"), std::uint16_t port = 0);
    ~LoopbackService();
    LoopbackService(const LoopbackService&) = delete;
    LoopbackService& operator=(const LoopbackService&) = delete;

    std::int32_t port() const { return port_; }

    /// For the connections that are made from now on.
    void setBehaviour(LoopbackBehaviour behaviour);

    /// The requests received so far, in the order in which they were complete. A request is here before its answer
    /// goes out.
    std::vector<std::string> requests() const;

    /// The same, but waits until there are `count`; gives up after ten seconds. For requests without an answer.
    std::vector<std::string> waitForRequests(std::size_t count) const;

  private:
    void acceptConnections();
    void serve(const UniqueFd& connection);
    void record(const std::string& request);

    UniqueFd listener_;
    UniqueFd stop_;
    std::int32_t port_ = 0;
    mutable std::mutex mutex_;
    mutable std::condition_variable recorded_;
    LoopbackBehaviour behaviour_;
    std::vector<std::string> requests_;
    std::vector<std::thread> connections_;
    std::thread acceptor_;
};

}  // namespace kestrav
