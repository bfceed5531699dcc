#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

namespace kestrav {

/// Why the privileged helper could not be installed. Only `authorizationFailed` is raised by this program; the other
/// cases belong to the vocabulary of the installation and are kept in their order.
///
/// `what()` is one sentence for the person at the screen, UTF-8.
class SMJError final : public std::exception {
  public:
    // frozen: F41
    enum class Case {
        badBundleSecurity,    ///< carries a status
        unableToBless,        ///< carries the description of an error
        authorizationFailed,  ///< carries a status
        bundleNotFound,
        unsignedBundle,
        badBundleCodeSigningDictionary,
        authorizationDenied,
        authorizationCanceled,
        authorizationInteractionNotAllowed,
    };

    static SMJError badBundleSecurity(std::int32_t status) { return {Case::badBundleSecurity, status, {}}; }
    static SMJError unableToBless(const std::exception& error) { return {Case::unableToBless, {}, error.what()}; }
    static SMJError authorizationFailed(std::int32_t status) { return {Case::authorizationFailed, status, {}}; }
    static SMJError bundleNotFound() { return {Case::bundleNotFound, {}, {}}; }
    static SMJError unsignedBundle() { return {Case::unsignedBundle, {}, {}}; }
    static SMJError badBundleCodeSigningDictionary() { return {Case::badBundleCodeSigningDictionary, {}, {}}; }
    static SMJError authorizationDenied() { return {Case::authorizationDenied, {}, {}}; }
    static SMJError authorizationCanceled() { return {Case::authorizationCanceled, {}, {}}; }
    static SMJError authorizationInteractionNotAllowed() { return {Case::authorizationInteractionNotAllowed, {}, {}}; }

    Case kind() const noexcept { return kind_; }
    /// The status of `badBundleSecurity` and `authorizationFailed`, else absent.
    std::optional<std::int32_t> status() const noexcept { return status_; }
    const char* what() const noexcept override { return description_.c_str(); }

  private:
    SMJError(Case kind, std::optional<std::int32_t> status, const std::string& cause);

    Case kind_;
    std::optional<std::int32_t> status_;
    std::string description_;
};

}  // namespace kestrav
