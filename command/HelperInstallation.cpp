#include "command/HelperInstallation.h"

#include <string>
#include <vector>

#include "base/SystemLog.h"
#include "base/stopProcess.h"
#include "command/SMJError.h"

namespace kestrav {

const char* const kInstalledSentence = "Installed successfully!";

// frozen: F38
bool HelperInstallation::blessHelper(std::optional<AuthorizationRef>& authRef) {
    // frozen: F40
    const std::vector<AuthorizationItem> rights{{"com.apple.ServiceManagement.blesshelper", {}, 0}};
    const auto [status, handle] = authorization_.create(
        rights, kAuthorizationInteractionAllowed | kAuthorizationExtendRights | kAuthorizationPreAuthorize);
    if (status != 0) {
        authRef.reset();
        throw SMJError::authorizationFailed(status);
    }
    require(handle.has_value());
    authRef = handle;

    std::optional<BlessingError> error;
    if (authorization_.bless(JobDomain::systemLaunchd, kHelperLabel, *handle, error)) {
        // frozen: F39
        log_.write(kInstalledSentence);
        return true;
    }
    // frozen: F42
    require(error.has_value());
    throw BlessingError(*error);
}

bool HelperInstallation::authorizeWithCmd(std::string_view cmd, std::optional<AuthorizationRef>& authRef) {
    // The item is made but not asked for: the consent is for administering, not for one command.
    // frozen: F43
    [[maybe_unused]] const std::vector<AuthorizationItem> notAskedFor{helperCommandItem(cmd)};
    const auto [status, handle] =
        authorization_.create({}, kAuthorizationInteractionAllowed | kAuthorizationExtendRights);
    if (handle) authRef = handle;
    log_.write("Authorization result: " + std::to_string(status));
    if (status != 0) return false;
    require(handle.has_value());
    // frozen: F44
    authorization_.setRight(*handle, kHelperRight, "authenticate-admin", "Authorize disk access");
    return true;
}

AuthorizationItem helperCommandItem(std::string_view cmd) {
    return {std::string(kHelperLabel), std::string(cmd), 0};
}

}  // namespace kestrav
