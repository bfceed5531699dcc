#include "app/LastWords.h"

#include <array>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/retry.h"
#include "command/AnswerTo.h"

namespace kestrav {
namespace {

constexpr char kBegins = 'b';
constexpr char kWrites = 'w';
constexpr char kEnded = 'e';
constexpr char kOnPurpose = 'q';
constexpr std::array kEndingSignals{SIGTERM, SIGINT, SIGHUP};

/// A signal's handler has no other way to it.
volatile std::sig_atomic_t otherOfTheHandler = -1;

extern "C" void endOnPurpose(int signal) {
    ::send(otherOfTheHandler, &kOnPurpose, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void listenForEndingSignals(void (*handler)(int)) {
    for (const int signal : kEndingSignals) {
        struct sigaction now {};
        // Who starts a program with the signal ignored, as nohup does, means it.
        if (::sigaction(signal, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) ::signal(signal, handler);
    }
}

/// What was going on when the process at the other end stopped; nothing if it ended on purpose.
std::optional<LastScene> sceneOfTheEnd(int socket) {
    LastScene scene;
    std::array<char, PATH_MAX + 1> record{};
    for (;;) {
        const ssize_t size = retry([&] { return ::recv(socket, record.data(), record.size(), 0); });
        if (size <= 0) return scene;
        switch (record.front()) {
            case kBegins:
                scene = {true, false, std::string(record.data() + 1, static_cast<std::size_t>(size) - 1)};
                break;
            case kWrites:
                scene.mayBeWritten = true;
                break;
            case kEnded:
                scene.isUpdating = false;
                break;
            default:
                return std::nullopt;
        }
    }
}

/// Whoever waits for the end of the program's output must not have to wait for this process as well.
void leaveTheOutput() {
    const UniqueFd nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing.get(), standard);
}

}  // namespace

LastWords::LastWords(const std::function<void(const LastScene&)>& tell) {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    UniqueFd here(ends[0]);
    UniqueFd there(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) return;
    if (child == 0) {
        here.reset();
        leaveTheOutput();
        ::prctl(PR_SET_NAME, "kestrav-witness");
        if (const auto scene = sceneOfTheEnd(there.get())) tell(*scene);
        ::_exit(0);
    }
    other_ = std::move(here);
    otherOfTheHandler = other_.get();
    listenForEndingSignals(endOnPurpose);
}

LastWords::~LastWords() {
    endsOnPurpose();
    if (!other_) return;
    listenForEndingSignals(SIG_DFL);
    otherOfTheHandler = -1;
}

/// Sent without waiting: the other process does nothing but read, and what it misses is not worth a stopped window.
void LastWords::send(char what, std::string_view more) const {
    if (!other_) return;
    const std::string record = what + std::string(more.substr(0, PATH_MAX));
    ::send(other_.get(), record.data(), record.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void LastWords::endsOnPurpose() {
    send(kOnPurpose);
}

void LastWords::updateBegins(const Button& /*sender*/, const std::string& path) {
    send(kBegins, path);
}

void LastWords::updateEnded(const Button& /*sender*/, const std::string& /*path*/) {
    send(kEnded);
}

void LastWords::asked(std::string_view command, std::span<const std::string> arguments) {
    if (AnswerTo::of(command, arguments).kind == AnswerTo::Kind::write) send(kWrites);
}

}  // namespace kestrav
