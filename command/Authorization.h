#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kestrav {

/// One thing that consent is asked for.
struct AuthorizationItem {
    std::string name;
    std::string value;  ///< bytes that say more about it; empty for none
    std::uint32_t flags = 0;

    bool operator==(const AuthorizationItem&) const = default;
};

/// How consent may be obtained; a union of the values below.
using AuthorizationFlags = std::uint32_t;
constexpr AuthorizationFlags kAuthorizationInteractionAllowed = 1;
constexpr AuthorizationFlags kAuthorizationExtendRights = 2;
constexpr AuthorizationFlags kAuthorizationPreAuthorize = 16;

/// What came of asking. The numbers are those of the authorization service that the helper was first installed with,
/// so that a number in a log means the same wherever the log was written.
enum class AuthorizationStatus : std::int32_t {
    success = 0,
    denied = -60005,                 ///< no password or a wrong one, or a rule that says no
    canceled = -60006,               ///< the prompt was dismissed
    interactionNotAllowed = -60007,  ///< there is no prompt: no authentication agent runs
    internal = -60008,               ///< the authorization service can't be reached, or failed in the middle
    toolExecuteFailure = -60031,     ///< the program that asks (pkexec) can't be run
    toolEnvironmentError = -60032,   ///< the installer that consent is asked for is missing
};

/// Names a consent that was given. The consent itself stays with the `Authorization` it came from, for the life of
/// that object; there is nothing to free.
struct AuthorizationRef {
    std::uint32_t number = 0;

    bool operator==(const AuthorizationRef&) const = default;
};

/// Where a helper is registered.
enum class JobDomain { systemLaunchd };

/// Why the helper was not installed although consent was given. `what()` is one sentence, UTF-8.
class BlessingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// An administrator's consent, and the two things that it is needed for. Everything runs on the calling thread, which
/// is the main thread, and waits until the person has answered.
class Authorization {
  public:
    virtual ~Authorization() = default;

    /// A consent or the reason why there is none.
    struct Creation {
        std::int32_t status = 0;  ///< 0, or one of `AuthorizationStatus`
        std::optional<AuthorizationRef> handle;
    };

    /// Asks for `rights`, which may be empty: then nobody is asked yet.
    virtual Creation create(std::span<const AuthorizationItem> rights, AuthorizationFlags flags) = 0;

    /// Installs the helper `label` and registers it in `domain`. False comes with an `error`.
    virtual bool bless(JobDomain domain, std::string_view label, AuthorizationRef handle,
                       std::optional<BlessingError>& error) = 0;

    /// Registers the right `name` under `rule`, with `descriptionKey` as the text of its prompt. Returns 0, or one of
    /// `AuthorizationStatus`.
    virtual std::int32_t setRight(AuthorizationRef handle, std::string_view name, std::string_view rule,
                                  std::string_view descriptionKey) = 0;
};

}  // namespace kestrav
