#include "tests/base/flushFaults.h"

#include <cerrno>
#include <sys/stat.h>

namespace kestrav {

FlushFaults& flushFaults() {
    static FlushFaults state;
    return state;
}

}  // namespace kestrav

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __real_fsync(int fd);

int __wrap_fsync(int fd) {
    struct stat status {};
    ::fstat(fd, &status);
    kestrav::FlushFaults& faults = kestrav::flushFaults();
    faults.flushed.emplace_back(S_ISDIR(status.st_mode) ? "folder" : "file");
    if (faults.error == 0) return __real_fsync(fd);
    errno = faults.error;
    return -1;
}
// NOLINTEND(bugprone-reserved-identifier)
}
