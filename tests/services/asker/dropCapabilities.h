#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrav {

/// The calling thread keeps its user and gives every capability up. Ends the process where that can't be done.
inline void dropCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2] = {};
    if (::syscall(SYS_capset, &header, none) != 0) ::_exit(9);
}

}  // namespace kestrav
