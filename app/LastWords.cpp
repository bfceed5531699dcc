#include "app/LastWords.h"

#include <array>
#include <climits>
#include <csignal>
#include <fcntl.h>
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

/// What was going on when the process at the other end stopped; nothing if it ended on purpose. Allocates nothing: the
/// scene's path has room for the longest.
const LastScene* sceneOfTheEnd(int socket, LastScene& scene) {
    std::array<char, PATH_MAX + 1> record{};
    for (;;) {
        const ssize_t size = retry([&] { return ::recv(socket, record.data(), record.size(), 0); });
        if (size <= 0) return &scene;
        switch (record.front()) {
            case kBegins:
                scene.isUpdating = true;
                scene.mayBeWritten = false;
                scene.path.assign(record.data() + 1, static_cast<std::size_t>(size) - 1);
                break;
            case kWrites:
                scene.mayBeWritten = true;
                break;
            case kEnded:
                scene.isUpdating = false;
                break;
            default:
                return nullptr;
        }
    }
}

/// Leaves the standard descriptors, on `nothing`, and the socket, and gives its number. Whoever waits for the end of
/// the program's output, of its display's or its bus's connection must not have to wait for this process as well.
int leaveAllBut(int socket, int nothing) {
    constexpr int kSocket = STDERR_FILENO + 1;
    // Where a program is started without them, the socket may have the number of a standard descriptor.
    const int above = ::fcntl(socket, F_DUPFD_CLOEXEC, kSocket + 1);
    const int null = ::fcntl(nothing, F_DUPFD_CLOEXEC, kSocket + 1);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(null, standard);
    ::dup3(above, kSocket, O_CLOEXEC);
    ::close_range(kSocket + 1, ~0U, 0);
    return kSocket;
}

}  // namespace

void LastWords::begin(const std::function<void(const LastScene&)>& tell) {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    UniqueFd here(ends[0]);
    const UniqueFd there(ends[1]);
    const UniqueFd nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    LastScene scene;
    scene.path.reserve(PATH_MAX);
    const pid_t child = ::fork();
    if (child < 0) return;
    if (child == 0) {
        ::prctl(PR_SET_NAME, kProcessName);
        if (const LastScene* last = sceneOfTheEnd(leaveAllBut(there.get(), nothing.get()), scene)) tell(*last);
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
