#include "services/commandd/Server.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "services/commandd/CallerJudge.h"
#include "services/commandd/Connection.h"
#include "services/commandd/RequestRunner.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/RequestLog.h"

namespace kestrav {
namespace {

constexpr std::size_t longestRequest = std::size_t{64} * 1024;
constexpr std::chrono::seconds timeToArrive{5};
constexpr std::chrono::seconds timeToLeave{1};
constexpr std::size_t mostPeers = 64;
constexpr std::ptrdiff_t mostPeersOfAUser = 48;  // so that one user's prompts don't keep root and others out
constexpr std::chrono::milliseconds pauseWithoutDescriptors{100};

// A terminal that closes and Ctrl-\ mean the same as a service manager's SIGTERM.
constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT};
// Mean nothing here, and would end a write if they were left to the system.
constexpr std::array meaninglessSignals{SIGPIPE, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF};

sigset_t handledSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : endingSignals)
        ::sigaddset(&signals, signal);
    ::sigaddset(&signals, SIGCHLD);
    return signals;
}

bool isEnding(std::uint32_t signal) {
    return std::any_of(endingSignals.begin(), endingSignals.end(),
                       [signal](int one) { return static_cast<std::uint32_t>(one) == signal; });
}

bool hasGone(int connection) {
    pollfd peer{connection, POLLRDHUP, 0};
    return ::poll(&peer, 1, 0) == 1;
}

std::string userName(uid_t uid) {
    return uid == RequestLog::kUnknown ? "unknown" : "user " + std::to_string(uid);
}

}  // namespace

Server::Server(UniqueFd listener, const CallerJudge& judge, RequestRunner& runner, RequestLog& log)
    : listener_(std::move(listener)),
      judge_(judge),
      runner_(runner),
      log_(log) {}

bool Server::run() {
    if (!openSignals()) return false;
    try {
        if (serve()) return true;
    } catch (const std::exception& error) {
        reportEnd(error.what());
    }
    waitForRunning();
    return false;
}

bool Server::serve() {
    while (!stopping_ || !running_.empty() || !leaving_.empty()) {
        auto watch = watched();
        const int ready = ::poll(watch.data(), watch.size(), millisecondsToNextDeadline());
        if (ready < 0 && errno != EINTR) {
            log_.write("poll: " + systemWords(errno));
            return false;
        }
        if (ready > 0) handle(watch);
        dropLate();
        log_.summarise();
    }
    log_.finish();
    return true;
}

/// Memory may be what is missing, and the log then fails as well.
void Server::reportEnd(const char* reason) noexcept try {
    log_.write("ending when the requests that were begun have ended: " + std::string(reason));
} catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nowhere is left to say it
}

/// A request's process is killed when this one ends, and a write that was begun is worth more than an end at once.
void Server::waitForRunning() noexcept {
    listener_.reset();
    for (const auto& [child, connection] : running_) {
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

bool Server::openSignals() {
    for (const int signal : meaninglessSignals)
        ::signal(signal, SIG_IGN);
    const sigset_t signals = handledSignals();
    if (::sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) return false;
    // Whoever started the service may have ignored them: then none would arrive, and no child could be waited for.
    for (const int signal : endingSignals)
        ::signal(signal, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
    signals_.reset(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
    return static_cast<bool>(signals_);
}

/// The signals, the listener, then peers and leaving ones in their lists' order.
std::vector<pollfd> Server::watched() const {
    std::vector<pollfd> watch;
    watch.reserve(2 + peers_.size() + leaving_.size());
    watch.push_back({signals_.get(), POLLIN, 0});
    watch.push_back({acceptAgain_ ? -1 : listener_.get(), POLLIN, 0});  // poll(2) skips -1
    for (const Peer& peer : peers_)
        watch.push_back({peer.connection.get(), POLLIN, 0});
    for (const Leaving& peer : leaving_)
        watch.push_back({peer.connection.get(), POLLIN, 0});
    return watch;
}

int Server::millisecondsToNextDeadline() const {
    std::optional<Clock::time_point> next = acceptAgain_;
    if (const auto summary = log_.nextSummary()) next = next ? std::min(*next, *summary) : *summary;
    const auto consider = [&next](Clock::time_point deadline) { next = next ? std::min(*next, deadline) : deadline; };
    for (const Peer& peer : peers_)
        consider(peer.deadline);
    for (const Leaving& peer : leaving_)
        consider(peer.deadline);
    if (!next) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left, 0));
}

void Server::handle(const std::vector<pollfd>& ready) {
    // Peers first: acceptAll() adds to the lists that `ready` mirrors.
    auto at = ready.begin() + 2;
    for (auto peer = peers_.begin(); peer != peers_.end(); ++at) {
        const auto current = peer++;
        if (at->revents != 0 && !receive(*current)) peers_.erase(current);
    }
    for (auto peer = leaving_.begin(); peer != leaving_.end() && at != ready.end(); ++at) {
        const auto current = peer++;
        if (at->revents != 0 && !drain(current->connection.get())) leaving_.erase(current);
    }
    if (ready[1].revents != 0) acceptAll();
    if (ready[0].revents != 0) handleSignals();
}

void Server::handleSignals() {
    signalfd_siginfo info{};
    bool toStop = false;
    while (::read(signals_.get(), &info, sizeof info) == sizeof info) {
        toStop = toStop || isEnding(info.ssi_signo);
    }
    collectChildren();
    if (toStop && !stopping_) stop();
}

void Server::acceptAll() {
    // A bounded number, so that a flood can't keep the loop from those who are here already.
    for (std::size_t count = 0; count < mostPeers && acceptOne(); ++count) {
    }
}

bool Server::acceptOne() {
    UniqueFd connection(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (connection) {
        admit(std::move(connection));
        return true;
    }
    const bool exhausted = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
    // The listener would stay readable and turn the loop into a spin.
    if (exhausted) acceptAgain_ = Clock::now() + pauseWithoutDescriptors;
    return errno == ECONNABORTED || errno == EINTR;
}

void Server::admit(UniqueFd connection) {
    const auto identity = peerIdentity(connection.get());
    // Nobody is left to be told, and nobody may fill the log by coming and going.
    if (!identity && hasGone(connection.get())) return;
    if (!identity) {
        refuse(std::move(connection), RequestLog::kUnknown, refused("the system does not tell who is asking."));
        return;
    }
    if (const auto refusal = judge_.refusal(identity->uid)) {
        refuse(std::move(connection), identity->uid, refused(*refusal));
        return;
    }
    if (isFull(identity->uid)) {
        refuse(std::move(connection), identity->uid, refused("the service is busy; try again in a moment."));
        return;
    }
    peers_.push_back({std::move(connection), *identity, Clock::now() + timeToArrive, {}, {}});
}

bool Server::isFull(uid_t uid) const {
    if (served() >= mostPeers) return true;
    const auto arriving = std::ranges::count_if(peers_, [uid](const Peer& peer) { return peer.identity.uid == uid; });
    const auto carriedOut =
        std::ranges::count_if(running_, [uid](const auto& entry) { return entry.second.uid == uid; });
    return uid != 0 && arriving + carriedOut >= mostPeersOfAUser;
}

/// False when this peer is done with here.
bool Server::receive(Peer& peer) {
    std::array<char, 16384> bytes;  // NOLINT: only what recv() wrote is looked at
    const ssize_t got = ::recv(peer.connection.get(), bytes.data(), bytes.size(), 0);
    if (got < 0) return errno == EAGAIN || errno == EINTR;
    const auto turnAway = [&](const char* sentence) {
        refuse(std::move(peer.connection), peer.identity.uid, refused(sentence));
        return false;
    };
    if (got == 0 && peer.received.empty()) return false;
    if (got == 0) return turnAway("the connection was closed before the request was complete.");
    peer.received.append(bytes.data(), static_cast<std::size_t>(got));
    const auto state = peer.scan.take(std::string_view(bytes.data(), static_cast<std::size_t>(got)));
    if (state == RequestScan::State::noObject) return turnAway("a request is a JSON object and begins with {.");
    if (peer.received.size() > longestRequest) return turnAway("the request is longer than 64 KiB.");
    if (state == RequestScan::State::moreBehindIt) return turnAway("there is more behind the request.");
    if (state == RequestScan::State::incomplete) return true;
    begin(peer);
    return false;
}

void Server::dropLate() {
    const auto now = Clock::now();
    if (acceptAgain_ && *acceptAgain_ <= now) acceptAgain_.reset();
    for (auto peer = peers_.begin(); peer != peers_.end();) {
        const auto current = peer++;
        if (current->deadline > now) continue;
        refuse(std::move(current->connection), current->identity.uid,
               refused("the request did not arrive within five seconds."));
        peers_.erase(current);
    }
    leaving_.remove_if([now](const Leaving& peer) { return peer.deadline <= now; });
}

void Server::begin(Peer& peer) {
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) runInChild(peer, parent);
    if (child > 0) {
        // Kept here as well, so that somebody can still answer if the child dies.
        running_.emplace(child, Running{std::move(peer.connection), peer.identity.uid});
        return;
    }
    refuse(std::move(peer.connection), peer.identity.uid,
           refused("no process can be started for the request: " + systemWords(errno) + "."));
}

void Server::runInChild(Peer& peer, pid_t parent) {
    // A service that is killed stops writing as a whole: what comes after it finds no disk in use.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    // Ctrl-C and a service manager's SIGTERM reach the whole group; a write that was begun ends first.
    for (const int signal : endingSignals)
        ::signal(signal, SIG_IGN);
    // They stay blocked: that they are pending shows that whatever has not begun yet need not begin any more.
    // Other peers' connections would stay open as long as this child has them too.
    const UniqueFd connection = std::move(peer.connection);
    const std::string request = std::move(peer.received);
    const PeerIdentity identity = peer.identity;
    listener_.reset();
    signals_.reset();
    peers_.clear();
    leaving_.clear();
    running_.clear();
    try {
        runner_.run(connection.get(), identity, request);
    } catch (const std::exception&) {
        ::_exit(1);  // the server answers; its own way of ending is not for a child
    }
    drainUntilClosed(connection.get());
    ::_exit(0);
}

void Server::collectChildren() {
    int status = 0;
    for (pid_t child = ::waitpid(-1, &status, WNOHANG); child > 0; child = ::waitpid(-1, &status, WNOHANG)) {
        auto connection = running_.extract(child);
        if (connection.empty() || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) continue;
        const std::string answer =
            answerFor(failed("the request's process ended before it was done. If it was a write, repeat it."));
        log_.write("process " + std::to_string(child) + ": " + answer);
        answerLast(std::move(connection.mapped().connection), answer);
    }
}

void Server::refuse(UniqueFd connection, uid_t uid, const Problem& problem) {
    const std::string answer = answerFor(problem);
    log_.refused(uid, userName(uid) + ": " + answer);
    answerLast(std::move(connection), answer);
}

void Server::answerLast(UniqueFd connection, std::string_view answer) {
    sendReply(connection.get(), answer);
    // The oldest goes without its second of grace rather than that strangers take all descriptors.
    if (leaving_.size() >= mostPeers) leaving_.pop_front();
    leaving_.push_back({std::move(connection), Clock::now() + timeToLeave});
}

void Server::stop() {
    log_.write(running_.empty() ? "stopping" : "stopping when the requests that were begun have ended");
    stopping_ = true;
    listener_.reset();
    acceptAgain_.reset();
    for (const auto& [child, request] : running_)
        ::kill(child, SIGTERM);
    for (Peer& peer : peers_) {
        refuse(std::move(peer.connection), peer.identity.uid, refused("the service is being stopped."));
    }
    peers_.clear();
}

}  // namespace kestrav
