#include "tests/sandbox/Sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/places.h"
#include "tests/sandbox/runProgram.h"

namespace kestrav {
namespace {

void must(bool held, const std::string& what) {
    if (!held) throw std::runtime_error(what + ": " + std::strerror(errno));
}

}  // namespace

bool Sandbox::isPossible() {
    return ::geteuid() == 0;
}

Sandbox::Sandbox()
    : before_(std::filesystem::current_path()),
      outside_(::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC)) {
    must(static_cast<bool>(outside_), "namespace");
    std::string name = "/tmp/kestrav-room-XXXXXX";
    must(::mkdtemp(name.data()) != nullptr, "folder");
    scratch_ = name;
    must(::unshare(CLONE_NEWNS) == 0, "unshare");
    must(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private");
    const ProgramRun run = runProgram({places::ofSource("tests/sandbox/own-folders"), scratch_});
    if (run.exitStatus != 0) throw std::runtime_error("own-folders: " + run.err);
}

Sandbox::~Sandbox() {
    ::setns(outside_.get(), CLONE_NEWNS);
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove(scratch_, ignored);
}

}  // namespace kestrav
