#include "tests/services/CommandDaemon.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/eventually.h"
#include "tests/places.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

[[noreturn]] void become(const CommandDaemon::Conditions& conditions, int listener, const std::string& log,
                         const std::string& board) {
    const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    ::dup2(conditions.errors.value_or(out), STDERR_FILENO);
    ::signal(SIGPIPE, SIG_DFL);
    for (const int number : {SIGTERM, SIGHUP, SIGCHLD})
        ::signal(number, conditions.ignoresSignals ? SIG_IGN : SIG_DFL);
    const int handed = conditions.handed.value_or(listener);
    if (handed >= 0) {
        const int copy = ::fcntl(handed, F_DUPFD, 10);  // a copy, lest it is 3 already and closes on exec
        ::dup2(copy, 3);
        ::setenv("LISTEN_FDS", "1", 1);
        ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    }
    ::close_range(handed >= 0 ? 4 : 3, ~0U, 0);
    ::setenv("RUNTIME_DIRECTORY", board.c_str(), 1);
    // Opened while its place can still be reached: it may have been built in a home that is closed to others.
    const int program = ::open(places::ofProgram("kestrav-commandd").c_str(), O_PATH | O_CLOEXEC);
    if (conditions.descriptors) {
        const rlimit limit{*conditions.descriptors, *conditions.descriptors};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    if (conditions.uid && ::setresuid(*conditions.uid, *conditions.uid, *conditions.uid) != 0) ::_exit(126);
    if (conditions.withoutInputAndOutput) ::close_range(STDIN_FILENO, STDOUT_FILENO, 0);
    std::string name = places::ofProgram("kestrav-commandd");
    char* const arguments[] = {name.data(), nullptr};
    ::fexecve(program, arguments, environ);
    ::_exit(127);
}

}  // namespace

CommandDaemon::CommandDaemon(const Conditions& conditions) {
    const UniqueFd listener = listenOnFreePort(port_);
    pid_ = ::fork();
    if (pid_ == 0) become(conditions, listener.get(), folder_.path() / "log", board());
    // What it says on a descriptor of somebody else's is for that one to wait for; the socket takes peers already.
    if (conditions.errors) return;
    eventually([this] { return !runs() || !log().empty(); });
}

CommandDaemon::~CommandDaemon() {
    if (ended_) return;
    signalOne(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
}

std::string CommandDaemon::log() const {
    return contentsOf(folder_.path() / "log");
}

std::filesystem::path CommandDaemon::board() const {
    return folder_.path() / "board";
}

void CommandDaemon::signal(int number) const {
    signalOne(pid_, number);
}

bool CommandDaemon::runs() {
    int status = 0;
    if (!ended_ && ::waitpid(pid_, &status, WNOHANG) == pid_) {
        ended_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return !ended_;
}

std::optional<int> CommandDaemon::waitForEnd() {
    eventually([this] { return !runs(); });
    return ended_;
}

UniqueFd listenOnFreePort(std::uint16_t& port) {
    UniqueFd listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::listen(listener.get(), SOMAXCONN) != 0 ||
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("no listener");
    }
    port = ntohs(address.sin_port);
    return listener;
}

Client::Client(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in address = loopback(port);
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("no connection");
    }
}

bool Client::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string Client::readOnce(int seconds) const {
    pollfd waiting{socket_.get(), POLLIN, 0};
    if (::poll(&waiting, 1, seconds * 1000) != 1) return {};
    std::string reply(10240, '\0');
    const ssize_t got = ::recv(socket_.get(), reply.data(), reply.size(), 0);
    reply.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return reply;
}

void Client::finishSending() const {
    ::shutdown(socket_.get(), SHUT_WR);
}

std::string requestFor(std::string_view command, const std::vector<std::string>& arguments) {
    std::string request = "{\"command\":\"" + std::string(command) + "\",\"arguments\":[";
    for (const std::string& argument : arguments) {
        request += (&argument == &arguments.front() ? "\"" : ",\"") + argument + "\"";
    }
    return request + "]}";
}

std::string ask(std::uint16_t port, std::string_view command, const std::vector<std::string>& arguments) {
    const Client client(port);
    client.send(requestFor(command, arguments));
    return client.readOnce();
}

}  // namespace kestrav
