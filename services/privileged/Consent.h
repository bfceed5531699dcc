#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <variant>

#include "services/privileged/Outcome.h"

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
};

using ConsentSubject = std::variant<AskingProcess, AskingBusName>;

/// Whether somebody who is not root may have commands run as root: a computer's rules or an administrator decide.
class Consent {
  public:
    virtual ~Consent() = default;

    /// Nothing when consent is given, else why there is none; whatever goes wrong is no consent. Where `mayInteract`,
    /// a person may be asked and be waited for, at most five minutes and only as long as `stillWanted` says so.
    virtual std::optional<Problem> refusal(const ConsentSubject& subject, bool mayInteract,
                                           const std::function<bool()>& stillWanted) = 0;
};

/// polkit's answer about the action com.corvatel.kestrav.run, over a connection to the system bus that is made for
/// each question. Blocks. Any user may be asked about, so this process has to be root's.
class PolkitConsent final : public Consent {
  public:
    std::optional<Problem> refusal(const ConsentSubject& subject, bool mayInteract,
                                   const std::function<bool()>& stillWanted) override;
};

}  // namespace kestrav
