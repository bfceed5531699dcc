#include "services/privileged/ImageFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "services/privileged/AnswerText.h"

namespace kestrav {
namespace {

constexpr int openMilliseconds = 10'000;  // a network or user-space file system may never answer

union DescriptorSpace {
    cmsghdr header;
    std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

/// Only root can take on another user; anyone else already has no more rights than its own.
bool takeOn(const Caller& caller) {
    if (::geteuid() != 0 || caller.uid == 0) return true;
    if (::setgroups(caller.groups.size(), caller.groups.data()) != 0) return false;
    return ::setresgid(caller.gid, caller.gid, caller.gid) == 0 && ::setresuid(caller.uid, caller.uid, caller.uid) == 0;
}

void sendDescriptor(int socket, int errorNumber, int descriptor) {
    iovec word{&errorNumber, sizeof errorNumber};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &word;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = space.bytes.data();
        message.msg_controllen = space.bytes.size();
        space.header = {CMSG_LEN(sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(CMSG_DATA(&space.header), &descriptor, sizeof descriptor);
    }
    ::sendmsg(socket, &message, MSG_NOSIGNAL);
}

[[noreturn]] void openInChild(const char* path, const Caller& caller, int socket) {
    // A path such as /proc/self/fd/5 must not lead to what the service has open.
    if (socket > 0) ::close_range(0, static_cast<unsigned>(socket) - 1, 0);
    ::close_range(static_cast<unsigned>(socket) + 1, ~0U, 0);
    if (!takeOn(caller)) {
        sendDescriptor(socket, EPERM, -1);
        ::_exit(1);
    }
    // NONBLOCK: opening a FIFO or a terminal must not wait; it is refused afterwards.
    const int file = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    sendDescriptor(socket, file < 0 ? errno : 0, file);
    ::_exit(0);
}

struct Received {
    int errorNumber;
    UniqueFd file;
};

Received receiveDescriptor(int socket) {
    pollfd waiting{socket, POLLIN, 0};
    int ready = ::poll(&waiting, 1, openMilliseconds);
    while (ready < 0 && errno == EINTR)
        ready = ::poll(&waiting, 1, openMilliseconds);
    if (ready <= 0) return {ETIMEDOUT, UniqueFd()};
    int errorNumber = 0;
    iovec word{&errorNumber, sizeof errorNumber};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &word;
    message.msg_iovlen = 1;
    message.msg_control = space.bytes.data();
    message.msg_controllen = space.bytes.size();
    const ssize_t got = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    if (got != static_cast<ssize_t>(sizeof errorNumber)) return {EIO, UniqueFd()};
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS) return {errorNumber == 0 ? EIO : errorNumber, UniqueFd()};
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return {0, UniqueFd(descriptor)};
}

Received openAs(const std::string& path, const Caller& caller) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return {errno, UniqueFd()};
    const UniqueFd ours(ends[0]);
    UniqueFd theirs(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) return {errno, UniqueFd()};
    if (child == 0) openInChild(path.c_str(), caller, theirs.get());
    theirs.reset();
    Received received = receiveDescriptor(ours.get());
    // It has answered or will never: either way there is nothing left that it should do.
    ::kill(child, SIGKILL);
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return received;
}

}  // namespace

Outcome<ImageFile> ImageFile::open(const std::string& path, const Caller& caller) {
    Received received = openAs(path, caller);
    const std::string name = "the image " + shown(path);
    if (received.errorNumber != 0) {
        return refused(name + " can't be opened by user " + std::to_string(caller.uid) + ": " +
                       systemWords(received.errorNumber) + ".");
    }
    struct stat status {};
    if (::fstat(received.file.get(), &status) != 0)
        return refused(name + " can't be examined: " + systemWords(errno) + ".");
    if (!S_ISREG(status.st_mode)) return refused(name + " is not a regular file.");
    if (status.st_size == 0) return refused(name + " is empty.");
    ::posix_fadvise(received.file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    return ImageFile(std::move(received.file), status);
}

std::uint64_t ImageFile::size() const {
    return static_cast<std::uint64_t>(status_.st_size);
}

std::error_code ImageFile::read(std::uint64_t offset, std::span<std::byte> into) const {
    while (!into.empty()) {
        const ssize_t got = ::pread(file_.get(), into.data(), into.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {errno, std::generic_category()};
        if (got == 0) return std::make_error_code(std::errc::result_out_of_range);
        into = into.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
    return {};
}

bool ImageFile::keptItsLength() const {
    struct stat now {};
    return ::fstat(file_.get(), &now) == 0 && now.st_size == status_.st_size;
}

}  // namespace kestrav
