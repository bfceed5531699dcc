#include "services/image/ImageReader.h"

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
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "base/retry.h"
#include "base/systemProblem.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPieceSize = std::size_t{1} << 20U;  // what the writer of a disk asks for at once
constexpr std::chrono::milliseconds kTimeToEnd{1000};

/// What the process is asked for: `length` bytes into the memory that both share, or with none a look at the file.
struct Question {
    std::uint64_t offset;
    std::uint64_t length;
};

/// The error is errno's, ERANGE when the file ends before what is read; 0 for none.
struct Answer {
    int errorNumber;
    mode_t mode;
    std::int64_t size;
    dev_t fileSystem;
};

/// Only root can take on another user; anyone else already has no more rights than its own.
bool takeOn(const UserRights& rights) {
    if (::geteuid() != 0 || rights.uid == 0) return true;
    if (::setgroups(rights.groups.size(), rights.groups.data()) != 0) return false;
    return ::setresgid(rights.gid, rights.gid, rights.gid) == 0 && ::setresuid(rights.uid, rights.uid, rights.uid) == 0;
}

int fill(int file, const Question& question, std::byte* into) {
    const auto got = readAt(file, std::span(into, question.length), question.offset);
    if (!got) return got.problem().cause.value();
    return got.value() < question.length ? ERANGE : 0;
}

Answer lookAt(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return {errno, 0, 0, 0};
    return {0, status.st_mode, status.st_size, status.st_dev};
}

void say(int socket, const Answer& answer) {
    retry([&] { return ::send(socket, &answer, sizeof answer, MSG_NOSIGNAL); });
}

bool hear(int socket, Question& question) {
    const ssize_t got = retry([&] { return ::recv(socket, &question, sizeof question, 0); });
    return got == static_cast<ssize_t>(sizeof question) && question.length <= kPieceSize;
}

[[noreturn]] void serve(const char* path, const UserRights& rights, int socket, pid_t parent, std::byte* shared) {
    // A path such as /proc/self/fd/5 must not lead to what the service has open.
    if (socket > 0) ::close_range(0, static_cast<unsigned>(socket) - 1, 0);
    ::close_range(static_cast<unsigned>(socket) + 1, ~0U, 0);
    if (!takeOn(rights)) {
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
        const int error = question.length == 0 ? 0 : fill(file, question, shared);
        say(socket, error == 0 ? lookAt(file) : Answer{error, 0, 0, 0});
    }
    ::_exit(0);
}

bool isReadable(int socket, std::chrono::milliseconds patience) {
    const auto end = Clock::now() + patience;
    pollfd waiting{socket, POLLIN, 0};
    const int ready = retry([&] {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        return ::poll(&waiting, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
    });
    return ready > 0;
}

}  // namespace

void ImageReader::Unmap::operator()(std::byte* shared) const noexcept {
    ::munmap(shared, kPieceSize);
}

ImageReader::ImageReader(const std::string& path, const UserRights& rights, ImagePatience patience)
    : patience_(patience) {
    void* shared = ::mmap(nullptr, kPieceSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    std::array<int, 2> ends{};
    if (shared != MAP_FAILED) shared_.reset(static_cast<std::byte*>(shared));
    if (!shared_ || ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        start_ = systemProblem(errno);
        return;
    }
    channel_.reset(ends[0]);
    const UniqueFd theirs(ends[1]);
    const pid_t parent = ::getpid();
    process_ = ::fork();
    if (process_ == 0) serve(path.c_str(), rights, theirs.get(), parent, shared_.get());
    if (process_ < 0) start_ = systemProblem(errno);
}

void ImageReader::end() noexcept {
    channel_.reset();
    // It stays to be collected, so the number is not another's yet.
    if (process_ > 0) ::kill(process_, SIGKILL);
}

ImageReader::~ImageReader() {
    end();
    if (process_ <= 0) return;
    const UniqueFd watch(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
    if (watch) isReadable(watch.get(), kTimeToEnd);
    const auto latest = Clock::now() + kTimeToEnd;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && Clock::now() < latest)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
}

std::chrono::milliseconds ImageReader::timeLeft() const {
    return std::chrono::ceil<std::chrono::milliseconds>(started_ + patience_.inAll - Clock::now());
}

Outcome<ImageReader::File> ImageReader::answer(std::chrono::milliseconds patience) {
    if (!channel_) return systemProblem(ETIMEDOUT);
    if (timeIsUp() || !isReadable(channel_.get(), std::min(patience, timeLeft()))) {
        // Its answer may still come, and would be taken for that to a later question.
        channel_.reset();
        return systemProblem(ETIMEDOUT);
    }
    Answer answer{};
    const ssize_t got = ::recv(channel_.get(), &answer, sizeof answer, 0);
    if (got != static_cast<ssize_t>(sizeof answer)) return systemProblem(EIO);
    if (answer.errorNumber != 0) return systemProblem(answer.errorNumber);
    return File{answer.mode, answer.size, answer.fileSystem};
}

Outcome<ImageReader::File> ImageReader::opened() {
    if (!start_) return start_.problem();
    return answer(patience_.toOpen);
}

Outcome<ImageReader::File> ImageReader::look() {
    const Question question{0, 0};
    if (channel_ && ::send(channel_.get(), &question, sizeof question, MSG_NOSIGNAL) < 0) return systemProblem(EIO);
    return answer(patience_.toRead);
}

/// A piece of the file, into the memory that both share, and the file as it is after that.
Outcome<ImageReader::File> ImageReader::readPiece(std::uint64_t offset, std::size_t length) {
    const Question question{offset, length};
    if (channel_ && ::send(channel_.get(), &question, sizeof question, MSG_NOSIGNAL) < 0) return systemProblem(EIO);
    return answer(patience_.toRead);
}

Outcome<void> ImageReader::read(std::uint64_t offset, std::span<std::byte> into) {
    while (!into.empty()) {
        const auto piece = into.first(std::min(into.size(), kPieceSize));
        if (const auto got = readPiece(offset, piece.size()); !got) return got.problem();
        // A copy: the process could still change what both share.
        std::memcpy(piece.data(), shared_.get(), piece.size());
        into = into.subspan(piece.size());
        offset += piece.size();
    }
    return {};
}

Outcome<bool> ImageReader::holds(std::uint64_t offset, std::span<const std::byte> bytes, std::uint64_t size) {
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), kPieceSize));
        const auto file = readPiece(offset, piece.size());
        if (!file) return file.problem();
        if (file.value().size != static_cast<std::int64_t>(size)) return false;
        // Where they stand: whatever the process makes of them afterwards, `bytes` are what was the same.
        if (std::memcmp(piece.data(), shared_.get(), piece.size()) != 0) return false;
        bytes = bytes.subspan(piece.size());
        offset += piece.size();
    }
    return true;
}

}  // namespace kestrav
