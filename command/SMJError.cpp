#include "command/SMJError.h"

#include "command/Authorization.h"

namespace kestrav {
namespace {

std::string authorizationSentence(std::int32_t status) {
    switch (static_cast<AuthorizationStatus>(status)) {
        case AuthorizationStatus::success:
            return "the authorization service gave no handle";
        case AuthorizationStatus::denied:
            return "an administrator's password was not given or was wrong, or a rule of this computer forbids it";
        case AuthorizationStatus::canceled:
            return "the request for an administrator's password was dismissed";
        case AuthorizationStatus::interactionNotAllowed:
            return "nothing can ask for an administrator's password here, because no authentication agent runs in "
                   "this session";
        case AuthorizationStatus::internal:
            return "the authorization service (polkit) does not answer";
        case AuthorizationStatus::toolExecuteFailure:
            return "the program pkexec, which asks for an administrator's password, can't be run; install it";
        case AuthorizationStatus::toolEnvironmentError:
            return "the helper's installer kestrav-bless is missing; install Kestrav again";
    }
    return "the authorization service failed";
}

std::string withStatus(const std::string& sentence, std::optional<std::int32_t> status) {
    return sentence + " (status " + std::to_string(status.value_or(0)) + ").";
}

std::string describe(SMJError::Case kind, std::optional<std::int32_t> status, const std::string& cause) {
    switch (kind) {
        case SMJError::Case::badBundleSecurity:
            return withStatus("The helper's files can't be trusted", status);
        case SMJError::Case::unableToBless:
            return "The helper could not be installed: " + cause;
        case SMJError::Case::authorizationFailed:
            return withStatus("The helper was not installed: " + authorizationSentence(status.value_or(0)), status);
        case SMJError::Case::bundleNotFound:
            return "The helper's files were not found.";
        case SMJError::Case::unsignedBundle:
            return "The helper's files are not signed.";
        case SMJError::Case::badBundleCodeSigningDictionary:
            return "The signature of the helper's files can't be read.";
        case SMJError::Case::authorizationDenied:
            return "An administrator's consent was denied.";
        case SMJError::Case::authorizationCanceled:
            return "The request for an administrator's consent was dismissed.";
        case SMJError::Case::authorizationInteractionNotAllowed:
            return "Nobody may be asked for an administrator's consent here.";
    }
    return cause;
}

}  // namespace

SMJError::SMJError(Case kind, std::optional<std::int32_t> status, const std::string& cause)
    : kind_(kind),
      status_(status),
      description_(describe(kind, status, cause)) {}

}  // namespace kestrav
