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

/// As above, but for this one capability alone, which is one of the first 32.
inline void dropCapability(unsigned capability) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct kept[2] = {};
    if (::syscall(SYS_capget, &header, kept) != 0) ::_exit(9);
    kept[0].effective &= ~(1U << capability);
    if (::syscall(SYS_capset, &header, kept) != 0) ::_exit(9);
}

}  // namespace kestrav
