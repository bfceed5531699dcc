#include "command/linux/PolkitAuthorization.h"

#include <algorithm>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "base/runChild.h"
#include "command/HelperInstallation.h"
#include "command/SMJError.h"

namespace kestrav {
namespace {

// pkexec(1), RETURN VALUE. The installer itself never exits with these.
constexpr int kDismissed = 126;
constexpr int kNotAuthorized = 127;

/// pkexec says with one number that consent was refused, that nobody could be asked and that it failed; its words tell
/// which of them it was.
AuthorizationStatus whyNotAuthorized(std::string_view words) {
    const auto says = [words](std::string_view part) { return words.find(part) != std::string_view::npos; };
    if (says("No authentication agent found")) return AuthorizationStatus::interactionNotAllowed;
    if (says("Not authorized")) return AuthorizationStatus::denied;
    if (says("must be setuid root")) return AuthorizationStatus::toolExecuteFailure;
    return AuthorizationStatus::internal;
}

std::int32_t number(AuthorizationStatus status) {
    return static_cast<std::int32_t>(status);
}

std::string sentence(const ChildRun& run) {
    std::string words = run.errors.substr(0, run.errors.find_last_not_of("\r\n") + 1);
    if (!words.empty()) return words;
    if (run.exitStatus < 0) return "The installer was ended in the middle of its work.";
    return "The installer failed (status " + std::to_string(run.exitStatus) + ").";
}

}  // namespace

PolkitAuthorization::PolkitAuthorization(std::string blessProgram, std::string pkexecProgram)
    : blessProgram_(std::move(blessProgram)),
      pkexecProgram_(std::move(pkexecProgram)) {}

Authorization::Creation PolkitAuthorization::create(std::span<const AuthorizationItem> rights,
                                                    AuthorizationFlags flags) {
    const bool root = ::geteuid() == 0;
    std::optional<InstallerRun> installed;
    if (!rights.empty()) {
        if (!root && (flags & kAuthorizationInteractionAllowed) == 0) {
            return {number(AuthorizationStatus::interactionNotAllowed), {}};
        }
        installed = perform("install");
        if (installed->status != AuthorizationStatus::success) return {number(installed->status), {}};
    }
    consents_.emplace(++last_, std::move(installed));
    return {0, AuthorizationRef{last_}};
}

bool PolkitAuthorization::bless(JobDomain, std::string_view label, AuthorizationRef handle,
                                std::optional<BlessingError>& error) {
    const auto consent = consents_.find(handle.number);
    if (consent == consents_.end() || label != kHelperLabel) {
        error = BlessingError("There is no helper of that name to install.");
        return false;
    }
    if (!consent->second) consent->second = perform("install");
    const InstallerRun& done = *consent->second;
    if (done.status != AuthorizationStatus::success) {
        error = BlessingError(SMJError::authorizationFailed(number(done.status)).what());
        return false;
    }
    error = done.failure;
    return !error.has_value();
}

std::int32_t PolkitAuthorization::setRight(AuthorizationRef handle, std::string_view name, std::string_view rule,
                                           std::string_view descriptionKey) {
    // The installer writes this one right with this one rule and text, so nobody can be talked into another.
    const bool known = consents_.contains(handle.number) && name == kHelperRight && rule == "authenticate-admin" &&
                       descriptionKey == "Authorize disk access";
    if (!known) return number(AuthorizationStatus::denied);
    const InstallerRun done = perform("register-right");
    if (done.failure) return number(AuthorizationStatus::toolEnvironmentError);
    return number(done.status);
}

Outcome<void> PolkitAuthorization::uninstall() {
    const InstallerRun done = perform("uninstall");
    if (done.failure) return failed(done.failure->what());
    if (done.status == AuthorizationStatus::success) return {};
    return refused(SMJError::authorizationFailed(number(done.status)).what());
}

PolkitAuthorization::InstallerRun PolkitAuthorization::perform(const char* operation) {
    const bool root = ::geteuid() == 0;
    if (::access(blessProgram_.c_str(), X_OK) != 0) return {AuthorizationStatus::toolEnvironmentError, {}};
    std::vector<std::string> words{blessProgram_, operation};
    if (!root) words.insert(words.begin(), {pkexecProgram_, "--disable-internal-agent"});
    // Root is asked nothing, and an installation is not broken off.
    const auto started = runChild(words, root ? nullptr : &asking_);
    if (!started) {
        return {root ? AuthorizationStatus::toolEnvironmentError : AuthorizationStatus::toolExecuteFailure, {}};
    }
    const ChildRun& run = started.value();
    if (run.exitStatus == 0) return {};
    if (!root && run.exitStatus == kDismissed) return {AuthorizationStatus::canceled, {}};
    if (!root && run.exitStatus == kNotAuthorized) return {whyNotAuthorized(run.errors), {}};
    // pkexec that was ended while it asked says nothing, an installer that was ended neither: no consent is certain.
    if (!root && run.exitStatus < 0) return {AuthorizationStatus::internal, {}};
    return {AuthorizationStatus::success, BlessingError(sentence(run))};
}

}  // namespace kestrav
