#pragma once

#include <optional>
#include <string_view>

#include "command/Authorization.h"
#include "protocol/names.h"

namespace kestrav {

class SystemLog;

/// What goes to the log when the helper was installed, for whoever shows it, too.
extern const char* const kInstalledSentence;

/// Installs the privileged helper with an administrator's consent. Used on the main thread; each call waits until the
/// person has answered the prompt.
class HelperInstallation {
  public:
    /// Neither is owned; both outlive this object.
    HelperInstallation(Authorization& authorization, SystemLog& log) : authorization_(authorization), log_(log) {}

    /// Asks for consent, then installs the helper, whether or not it is installed already. True on success, with the
    /// consent left in `authRef`, where it stays for the life of the process.
    /// Raises `SMJError` (`authorizationFailed`) when there is no consent, with `authRef` emptied, or the
    /// installer's `BlessingError`. Stops the process when the installer fails without one.
    bool blessHelper(std::optional<AuthorizationRef>& authRef);

    /// Obtains an administrator authorization for running `cmd` through the helper and registers the right
    /// `kHelperRight`. True exactly when the authorization was created, whatever came of registering the right.
    /// Stops the process when an authorization was created without a handle.
    bool authorizeWithCmd(std::string_view cmd, std::optional<AuthorizationRef>& authRef);

  private:
    Authorization& authorization_;
    SystemLog& log_;
};

/// The item that names running `cmd` through the helper; its value is the command's bytes.
AuthorizationItem helperCommandItem(std::string_view cmd);

}  // namespace kestrav
