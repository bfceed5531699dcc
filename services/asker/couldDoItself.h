#pragma once

#include <sys/types.h>

#include "base/Outcome.h"

namespace kestrav {

/// Whether that process of `uid`'s could do what it asks for without the service, which therefore asks nobody: all of
/// its threads run as that user in every respect, and one of them has the service's root folder and mounts (a path
/// means the same file to both) and has the capabilities that the service has of those that unmounting and writing a
/// disk take. A root that was confined or has given its rights up is refused.
Outcome<void> couldDoItself(pid_t process, uid_t uid);

}  // namespace kestrav
