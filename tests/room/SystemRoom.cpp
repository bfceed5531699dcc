#include "tests/room/SystemRoom.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <unistd.h>

namespace kestrav {
namespace {

void must(bool held, const std::string& what) {
    if (!held) throw std::runtime_error(what + ": " + std::strerror(errno));
}

void mountEmpty(const std::string& folder) {
    must(::mount("kestrav-room", folder.c_str(), "tmpfs", 0, "mode=755") == 0, "tmpfs on " + folder);
}

constexpr std::array kOwnFolders{"/etc", "/usr/local", "/usr/libexec", "/usr/share/polkit-1", "/var/lib"};

}  // namespace

bool SystemRoom::isPossible() {
    return ::geteuid() == 0;
}

SystemRoom::SystemRoom()
    : before_(std::filesystem::current_path()),
      outside_(::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC)) {
    must(static_cast<bool>(outside_), "namespace");
    std::string name = "/tmp/kestrav-room-XXXXXX";
    must(::mkdtemp(name.data()) != nullptr, "folder");
    scratch_ = name;
    must(::unshare(CLONE_NEWNS) == 0, "unshare");
    must(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private");
    mountEmpty(scratch_);
    int number = 0;
    for (const char* folder : kOwnFolders)
        layOver(folder, number++);
    mountEmpty("/run");
    for (const char* folder : {"/run/lock", "/run/dbus"})
        std::filesystem::create_directory(folder);
}

SystemRoom::~SystemRoom() {
    ::setns(outside_.get(), CLONE_NEWNS);
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove(scratch_, ignored);
}

void SystemRoom::layOver(const std::string& folder, int number) const {
    const auto own = scratch_ / std::to_string(number);
    std::filesystem::create_directories(own / "upper");
    std::filesystem::create_directory(own / "work");
    const std::string options =
        "lowerdir=" + folder + ",upperdir=" + (own / "upper").string() + ",workdir=" + (own / "work").string();
    must(::mount("kestrav-room", folder.c_str(), "overlay", 0, options.c_str()) == 0, "overlay on " + folder);
}

}  // namespace kestrav
