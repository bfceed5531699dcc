#include "tests/services/SlowFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <linux/fuse.h>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/UniqueFd.h"
#include "base/retry.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

constexpr std::uint64_t imageNode = 2;  // FUSE_ROOT_ID is 1

/// A node of this object's own, because /dev may be a private one.
/// The kernel's end of a file system of a program's own; nothing with errno set where it can't be had.
UniqueFd openFuse() {
    const std::string path = "/tmp/kestrav-fuse-" + std::to_string(::getpid());
    ::unlink(path.c_str());
    if (::mknod(path.c_str(), S_IFCHR | 0600, makedev(10, 229)) != 0) return {};
    UniqueFd fuse(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    const int error = errno;
    ::unlink(path.c_str());
    errno = error;
    return fuse;
}

template <class Body>
Body bodyOf(const std::vector<char>& request) {
    Body body{};
    std::memcpy(&body, request.data() + sizeof(fuse_in_header), sizeof body);
    return body;
}

class Server {
  public:
    Server(UniqueFd fuse, const SlowFolder::Behaviour& behaviour) : fuse_(std::move(fuse)), behaviour_(behaviour) {}

    [[noreturn]] void run() {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::vector<char> request(FUSE_MIN_READ_BUFFER + 65536);
        while (true) {
            const ssize_t got = retry([&] { return ::read(fuse_.get(), request.data(), request.size()); });
            if (got < 0 && errno == ENOENT) continue;
            if (got < static_cast<ssize_t>(sizeof(fuse_in_header))) ::_exit(0);
            std::memcpy(&header_, request.data(), sizeof header_);
            answer(request);
        }
    }

  private:
    void send(int error, const void* body, std::size_t size) const {
        fuse_out_header head{};
        head.len = static_cast<std::uint32_t>(sizeof head + size);
        head.error = -error;
        head.unique = header_.unique;
        std::vector<char> message(head.len);
        std::memcpy(message.data(), &head, sizeof head);
        if (size > 0) std::memcpy(message.data() + sizeof head, body, size);
        if (::write(fuse_.get(), message.data(), message.size()) < 0) return;  // whoever asked has gone
    }
    void fail(int error) const { send(error, nullptr, 0); }
    template <class Body>
    void give(const Body& body) const {
        send(0, &body, sizeof body);
    }

    fuse_attr attributesOf(std::uint64_t node) const {
        fuse_attr attributes{};
        attributes.ino = node;
        attributes.nlink = 1;
        attributes.mode = node == FUSE_ROOT_ID ? S_IFDIR | 0755 : S_IFREG | 0644;
        attributes.size = node == FUSE_ROOT_ID ? 0 : behaviour_.size;
        attributes.blksize = 4096;
        return attributes;
    }

    void answer(const std::vector<char>& request) const {
        switch (header_.opcode) {
            case FUSE_INIT:
                return begin(bodyOf<fuse_init_in>(request));
            case FUSE_LOOKUP:
                return find();
            case FUSE_GETATTR:
                return look();
            case FUSE_OPEN:
                return open();
            case FUSE_READ:
                return read(bodyOf<fuse_read_in>(request));
            case FUSE_FORGET:
            case FUSE_BATCH_FORGET:
            case FUSE_INTERRUPT:
                return;  // these take no answer, and whoever is stalled stays it
            default:
                return fail(ENOSYS);
        }
    }

    void begin(const fuse_init_in& asked) const {
        fuse_init_out out{};
        out.major = FUSE_KERNEL_VERSION;
        out.minor = std::min<std::uint32_t>(asked.minor, FUSE_KERNEL_MINOR_VERSION);
        out.max_write = 4096;
        give(out);
    }
    void find() const {
        fuse_entry_out out{};
        out.nodeid = imageNode;
        out.attr = attributesOf(imageNode);
        give(out);
    }
    void look() const {
        fuse_attr_out out{};
        out.attr = attributesOf(header_.nodeid);
        give(out);
    }
    void open() const {
        if (!behaviour_.answersOpening) return;
        fuse_open_out out{};
        out.open_flags = FOPEN_DIRECT_IO;  // each read comes here, and none is read ahead
        give(out);
    }
    void read(const fuse_read_in& asked) const {
        const std::uint64_t end = std::min(asked.offset + asked.size, behaviour_.size);
        if (behaviour_.stallsFrom && end > *behaviour_.stallsFrom) return;
        if (behaviour_.failsFrom && end > *behaviour_.failsFrom) return fail(behaviour_.failsWith);
        const std::vector<char> zeros(end > asked.offset ? end - asked.offset : 0);
        send(0, zeros.data(), zeros.size());
    }

    UniqueFd fuse_;
    SlowFolder::Behaviour behaviour_;
    fuse_in_header header_{};
};

}  // namespace

bool SlowFolder::isPossible() {
    if (::geteuid() != 0) return false;
    if (openFuse()) return true;
    // The right to such a node is refused, or the kernel has nothing behind it. Any other reason is a fault, which
    // shows when the folder is made.
    return errno != EPERM && errno != EACCES && errno != ENODEV && errno != ENXIO && errno != ENOENT;
}

SlowFolder::SlowFolder(std::string place, const Behaviour& behaviour) : place_(std::move(place)) {
    UniqueFd fuse = openFuse();
    const std::string options =
        "fd=" + std::to_string(fuse.get()) + ",rootmode=40000,user_id=0,group_id=0,allow_other,default_permissions";
    if (::mount("kestrav", place_.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) != 0) {
        throw std::runtime_error(std::string("no user-space file system: ") + std::strerror(errno));
    }
    server_ = ::fork();
    if (server_ == 0) Server(std::move(fuse), behaviour).run();
}

void SlowFolder::end() {
    if (server_ <= 0) return;
    signalOne(server_, SIGKILL);
    ::waitpid(server_, nullptr, 0);
    server_ = -1;
    ::umount2(place_.c_str(), MNT_DETACH);
}

}  // namespace kestrav
