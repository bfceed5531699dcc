#include "services/commandd/Server.h"

#include <array>
#include <cerrno>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

#include "protocol/wire.h"
#include "services/asker/SocketAsker.h"
#include "services/asker/obtainConsent.h"
#include "services/commandd/RequestScan.h"
#include "services/commandd/readRequest.h"
#include "services/commandd/sendReply.h"
#include "services/gate/answerFor.h"

namespace kestrav {
namespace {

bool hasGone(int connection) {
    pollfd peer{connection, POLLRDHUP, 0};
    return ::poll(&peer, 1, 0) == 1;
}

Problem isBusy() {
    return refused("the service is busy; try again in a moment.");
}

/// Root is not asked about: then it is the computer that took so long.
Problem isTooLate(uid_t uid) {
    if (needsConsent(uid)) return refused("nobody has agreed within 50 seconds; nothing was done.");
    return refused(
        "the request could not be begun within 50 seconds; nothing was done. Has the computer too much to do?");
}

std::string userName(uid_t uid) {
    return uid == RequestLog::kUnknown ? "unknown" : "user " + std::to_string(uid);
}

}  // namespace

/// A connection from its acceptance to its answer.
class Server::Peer final : public Request {
  public:
    Peer(Server& server, UniqueFd fd, const PeerIdentity& identity, JobTable::Place where)
        : place(std::move(where)),
          connection(std::move(fd)),
          number(server.arrivals_++),
          server_(server),
          asker_(connection.get(), identity, ::getpid()) {
        server_.everybody_.insert(this);
    }
    ~Peer() override { server_.everybody_.erase(this); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    Asker& asker() override { return asker_; }
    Outcome<CommandLine> read() override { return readRequest(received); }
    /// Other peers' connections would stay open as long as this process has them too.
    void leaveService() override {
        server_.listener_.reset();
        for (Peer* const peer : server_.everybody_) {
            if (peer != this) peer->connection.reset();
        }
        for (Leaving& peer : server_.leaving_)
            peer.connection.reset();
    }
    void letGo() override { connection.reset(); }
    bool isStillWanted() const override { return !hasGone(connection.get()); }
    void ended(const RequestEnd& end) override { server_.answer(*this, end); }

    JobTable::Place place;
    UniqueFd connection;
    const std::uint64_t number;
    RequestScan scan;
    std::string received;
    EventLoop::Watch readable;
    EventLoop::Watch deadline;
    EventLoop::Watch going;

  private:
    Server& server_;
    SocketAsker asker_;
};

Server::Server(UniqueFd listener, Gate& gate, RequestLog& log, Patience patience)
    : listener_(std::move(listener)),
      log_(log),
      patience_(patience),
      jobs_(*this, gate, log, isBusy()) {
    listen();
}

Server::~Server() = default;

bool Server::run() {
    return jobs_.run();
}

void Server::listen() {
    accepting_ = jobs_.loop().onReadable(listener_.get(), [this] { acceptAll(); });
}

void Server::acceptAll() {
    // A bounded number, so that a flood can't keep the loop from those who are here already.
    for (std::size_t count = 0; count < JobTable::kPlaces && acceptOne(); ++count) {
    }
}

bool Server::acceptOne() {
    UniqueFd connection(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (connection) {
        welcome(std::move(connection));
        return true;
    }
    const int error = errno;
    if (error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM) {
        // The listener would stay readable and turn the loop into a spin.
        accepting_ = jobs_.loop().after(patience_.withoutDescriptors, [this] { listen(); });
    }
    return error == ECONNABORTED || error == EINTR;
}

void Server::welcome(UniqueFd connection) {
    const auto identity = peerIdentity(connection.get());
    // Nobody is left to be told, and nobody may fill the log by coming and going.
    if (!identity && hasGone(connection.get())) return;
    if (!identity) return refuse(std::move(connection), RequestLog::kUnknown, answerFor(identity.problem()));
    const PeerIdentity& who = identity.value();
    auto place = jobs_.admit(who.uid);
    if (!place) return refuse(std::move(connection), who.uid, answerFor(place.problem()));
    const int fd = connection.get();
    const auto peer =
        peers_.emplace(fd, std::make_unique<Peer>(*this, std::move(connection), who, std::move(place.value())));
    Peer& arriving = *peer.first->second;
    arriving.readable = jobs_.loop().onReadable(fd, [this, &arriving] { receive(arriving); });
    arriving.deadline = jobs_.loop().after(patience_.toArrive, [this, &arriving] {
        turnAway(arriving, refused("the request did not arrive within five seconds."));
    });
}

void Server::receive(Peer& peer) {
    std::array<char, 16384> bytes;  // NOLINT: only what recv() wrote is looked at
    const ssize_t got = ::recv(peer.connection.get(), bytes.data(), bytes.size(), 0);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (got < 0 || (got == 0 && peer.received.empty())) {
        peers_.erase(peer.connection.get());
        return;
    }
    if (got == 0) return turnAway(peer, refused("the connection was closed before the request was complete."));
    const std::string_view piece(bytes.data(), static_cast<std::size_t>(got));
    peer.received.append(piece);
    const auto state = peer.scan.take(piece);
    if (state == RequestScan::State::noObject)
        return turnAway(peer, refused("a request is a JSON object and begins with {."));
    if (peer.received.size() > kLongestRequest) return turnAway(peer, refused("the request is longer than 64 KiB."));
    if (state == RequestScan::State::moreBehindIt) return turnAway(peer, refused("there is more behind the request."));
    if (state == RequestScan::State::incomplete) return;
    auto complete = std::move(peers_.extract(peer.connection.get()).mapped());
    complete->readable.reset();
    complete->deadline =
        jobs_.loop().after(patience_.toAgree, [this, late = complete.get()] { jobs_.giveUpUnagreed(*late); });
    JobTable::Place place = std::move(complete->place);
    complete->going = jobs_.loop().onSendingEnded(complete->connection.get(), [this, gone = complete.get()] {
        gone->going.reset();
        jobs_.giveUp(*gone);
    });
    jobs_.start(std::move(place), std::move(complete));
}

void Server::turnAway(Peer& peer, const Problem& problem) {
    const auto gone = peers_.extract(peer.connection.get());
    peer.readable.reset();
    refuse(std::move(peer.connection), peer.asker().uid(), answerFor(problem));
}

void Server::answer(Peer& peer, const RequestEnd& end) {
    const uid_t uid = peer.asker().uid();
    peer.going.reset();
    peer.deadline.reset();
    const auto refuseWith = [&](const Problem& problem) {
        refuse(std::move(peer.connection), uid, answerFor(problem));
    };
    if (end.isLate && !end.begun && !isStopping_) {
        return refuse(std::move(peer.connection), uid, answerFor(isTooLate(uid)), end.asked);
    }
    switch (end.kind) {
        case RequestEnd::Kind::answered:
            return answerLast(std::move(peer.connection), end.text);
        case RequestEnd::Kind::denied:
            return refuse(std::move(peer.connection), uid, end.text, end.asked);
        case RequestEnd::Kind::notStarted:
            return refuseWith(refused("no process can be started for the request: " + end.text + "."));
        case RequestEnd::Kind::notBegun:
            if (isStopping_) return refuseWith(refused("the service is being stopped."));
            log_.refused(uid, userName(uid) + ": " + "gone before the request was begun; nothing was done");
            // Who ended its sending alone can still read.
            return answerLast(std::move(peer.connection),
                              answerFor(refused("the connection was closed before the request was begun; nothing was "
                                                "done. Keep it open until the answer is there.")));
        case RequestEnd::Kind::died:
            break;
    }
    const std::string answer =
        answerFor(failed("the request's process ended before it was done. If it was a write, repeat it."));
    log_.write("process " + std::to_string(end.process) + ": " + answer);
    answerLast(std::move(peer.connection), answer);
}

void Server::refuse(UniqueFd connection, uid_t uid, const std::string& answer, const std::string& asked) {
    log_.refused(uid, userName(uid) + ": " + (asked.empty() ? "" : asked + ": ") + answer);
    answerLast(std::move(connection), answer);
}

void Server::answerLast(UniqueFd connection, std::string_view answer) {
    sendReply(connection.get(), answer);
    // The oldest goes without its second of grace rather than that strangers take all descriptors.
    if (leaving_.size() >= JobTable::kPlaces) leaving_.pop_front();
    const auto peer = leaving_.insert(leaving_.end(), {std::move(connection), {}, {}});
    const auto leave = [this, peer] {
        leaving_.erase(peer);
        endWhenDone();
    };
    peer->readable = jobs_.loop().onReadable(peer->connection.get(), [peer, leave] {
        if (!drain(peer->connection.get())) leave();
    });
    peer->deadline = jobs_.loop().after(patience_.toLeave, leave);
}

void Server::stop() {
    if (std::exchange(isStopping_, true)) return;
    log_.write(jobs_.isEmpty() ? "stopping" : "stopping when the requests that were begun have ended");
    takeNothingMore();
    jobs_.giveUpWaiting();
    while (!peers_.empty())
        turnAway(*peers_.begin()->second, refused("the service is being stopped."));
    endWhenDone();
}

bool Server::giveWay(uid_t uid) {
    Peer* oldest = nullptr;
    for (const auto& [fd, peer] : peers_) {
        if (peer->asker().uid() == uid && (oldest == nullptr || peer->number < oldest->number)) oldest = peer.get();
    }
    if (oldest == nullptr) return false;
    turnAway(*oldest, isBusy());
    return true;
}

void Server::takeNothingMore() noexcept {
    accepting_.reset();
    listener_.reset();
}

void Server::endWhenDone() {
    if (isStopping_ && jobs_.isEmpty() && leaving_.empty()) jobs_.loop().end();
}

}  // namespace kestrav
