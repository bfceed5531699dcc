#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <variant>

namespace kestrav {

/// A process of this computer, told from a later one of the same number by when it was started.
struct AskingProcess {
    pid_t pid;
    std::uint64_t startTime;  ///< field 22 of /proc/PID/stat
    uid_t uid;                ///< who asks, as the kernel knows it

    friend bool operator==(const AskingProcess&, const AskingProcess&) = default;
};

/// A connection to the system bus, by its unique name, such as ":1.42". It is never given to anybody else.
struct AskingBusName {
    std::string name;
    pid_t process = 0;  ///< the one that made it, as the bus says; 0 when that is not known

    friend bool operator==(const AskingBusName&, const AskingBusName&) = default;
};

/// Whom consent is asked for.
using ConsentSubject = std::variant<AskingProcess, AskingBusName>;

}  // namespace kestrav
