#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kestrav {

/// Opens /dev/null on each of the descriptors 0 to 2 that the process was started without. Otherwise the next file or
/// disk that it opens would become one of them, and a line for standard error would be written into it.
///
/// First in main(), before anything is opened. False when /dev/null can't be opened: then nothing else may be.
inline bool openStandardDescriptors() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (::fcntl(number, F_GETFD) >= 0 || errno != EBADF) continue;
        // The lowest free descriptor is this one: those below it are open.
        if (::open("/dev/null", O_RDWR) != number) return false;
    }
    return true;
}

}  // namespace kestrav
