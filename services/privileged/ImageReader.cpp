#include "services/privileged/ImageReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t pieceSize = std::size_t{1} << 20U;  // what the writer of a disk asks for at once
constexpr std::chrono::milliseconds timeToEnd{1000};

/// What the process is asked for: `length` bytes into the memory that both share, or with none a look at the file.
struct Question {
    std::uint64_t offset;
    std::uint64_t length;
};

struct Answer {
    int errorNumber;  // 0, errno's, or endOfFile
    mode_t mode;
    std::int64_t size;
    dev_t fileSystem;
};
constexpr int endOfFile = -1;

std::error_code errorOf(int number) {
    if (number == endOfFile) return std::make_error_code(std::errc::result_out_of_range);
    return {number, std::generic_category()};
}

/// Only root can take on another user; anyone else already has no more rights than its own.
bool takeOn(const Caller& caller) {
    if (::geteuid() != 0 || caller.uid == 0) return true;
    if (::setgroups(caller.groups.size(), caller.groups.data()) != 0) return false;
    return ::setresgid(caller.gid, caller.gid, caller.gid) == 0 && ::setresuid(caller.uid, caller.uid, caller.uid) == 0;
}

int fill(int file, const Question& question, std::byte* into) {
    std::size_t done = 0;
    while (done < question.length) {
        const ssize_t got =
            ::pread(file, into + done, question.length - done, static_cast<off_t>(question.offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return errno;
        if (got == 0) return endOfFile;
        done += static_cast<std::size_t>(got);
    }
    return 0;
}

Answer lookAt(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return {errno, 0, 0, 0};
    return {0, status.st_mode, status.st_size, status.st_dev};
}

void say(int socket, const Answer& answer) {
    while (::send(socket, &answer, sizeof answer, MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

bool hear(int socket, Question& question) {
    ssize_t got = -1;
    do {
        got = ::recv(socket, &question, sizeof question, 0);
    } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(sizeof question) && question.length <= pieceSize;
}

[[noreturn]] void serve(const char* path, const Caller& caller, int socket, pid_t parent, std::byte* shared) {
    // A path such as /proc/self/fd/5 must not lead to what the service has open.
    if (socket > 0) ::close_range(0, static_cast<unsigned>(socket) - 1, 0);
    ::close_range(static_cast<unsigned>(socket) + 1, ~0U, 0);
    if (!takeOn(caller)) {
        say(socket, {EPERM, 0, 0, 0});
        ::_exit(1);
    }
    // Only now: taking on another user's rights undoes it.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    // NONBLOCK: opening a FIFO or a terminal must not wait; it is refused afterwards.
    const int file = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    say(socket, file < 0 ? Answer{errno, 0, 0, 0} : lookAt(file));
    if (file < 0) ::_exit(0);
    ::posix_fadvise(file, 0, 0, POSIX_FADV_SEQUENTIAL);
    Question question{};
    while (hear(socket, question)) {
        say(socket, question.length == 0 ? lookAt(file) : Answer{fill(file, question, shared), 0, 0, 0});
    }
    ::_exit(0);
}

bool isReadable(int socket, std::chrono::milliseconds patience) {
    const auto end = Clock::now() + patience;
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting{socket, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

}  // namespace

void ImageReader::Unmap::operator()(std::byte* shared) const noexcept {
    ::munmap(shared, pieceSize);
}

ImageReader::ImageReader(const std::string& path, const Caller& caller, ImagePatience patience) : patience_(patience) {
    void* shared = ::mmap(nullptr, pieceSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    std::array<int, 2> ends{};
    if (shared != MAP_FAILED) shared_.reset(static_cast<std::byte*>(shared));
    if (!shared_ || ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        start_ = errorOf(errno);
        return;
    }
    channel_.reset(ends[0]);
    const UniqueFd theirs(ends[1]);
    const pid_t parent = ::getpid();
    process_ = ::fork();
    if (process_ == 0) serve(path.c_str(), caller, theirs.get(), parent, shared_.get());
    if (process_ < 0) start_ = errorOf(errno);
}

ImageReader::~ImageReader() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    const auto end = Clock::now() + timeToEnd;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && Clock::now() < end)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
}

ImageReader::File ImageReader::answer(std::chrono::milliseconds patience) {
    const auto failed = [](int number) { return File{errorOf(number), 0, 0, 0}; };
    if (!channel_) return failed(ETIMEDOUT);
    if (!isReadable(channel_.get(), patience)) {
        // Its answer may still come, and would be taken for that to a later question.
        channel_.reset();
        return failed(ETIMEDOUT);
    }
    Answer answer{};
    const ssize_t got = ::recv(channel_.get(), &answer, sizeof answer, 0);
    if (got != static_cast<ssize_t>(sizeof answer)) return failed(EIO);
    return {errorOf(answer.errorNumber), answer.mode, answer.size, answer.fileSystem};
}

ImageReader::File ImageReader::opened() {
    if (start_) return {start_, 0, 0, 0};
    return answer(patience_.toOpen);
}

ImageReader::File ImageReader::look() {
    const Question question{0, 0};
    if (channel_ && ::send(channel_.get(), &question, sizeof question, MSG_NOSIGNAL) < 0)
        return {errorOf(EIO), 0, 0, 0};
    return answer(patience_.toRead);
}

std::error_code ImageReader::readPiece(std::uint64_t offset, std::span<std::byte> into) {
    const Question question{offset, into.size()};
    if (channel_ && ::send(channel_.get(), &question, sizeof question, MSG_NOSIGNAL) < 0) return errorOf(EIO);
    const auto error = answer(patience_.toRead).error;
    // A copy: the process could still change what both share.
    if (!error) std::memcpy(into.data(), shared_.get(), into.size());
    return error;
}

std::error_code ImageReader::read(std::uint64_t offset, std::span<std::byte> into) {
    while (!into.empty()) {
        const auto piece = into.first(std::min(into.size(), pieceSize));
        if (const auto error = readPiece(offset, piece)) return error;
        into = into.subspan(piece.size());
        offset += piece.size();
    }
    return {};
}

}  // namespace kestrav
