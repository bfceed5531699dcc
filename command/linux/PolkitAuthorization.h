#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/EndableChild.h"
#include "base/Outcome.h"
#include "command/Authorization.h"

namespace kestrav {

/// An administrator's consent by way of polkit: pkexec asks through the desktop's own prompt and runs the installer
/// kestrav-bless as root. Where this process is root already, nobody is asked.
///
/// pkexec asks and runs in one step, and asking twice for one installation would be worse than the order of two calls:
/// so `create` for the right to install installs as well, and `bless` hands out what came of it. A consent without
/// rights asks nobody until something is done with it. pkexec is a direct child of this process, which makes this
/// process the one that polkit remembers the consent for.
class PolkitAuthorization final : public Authorization {
  public:
    /// The programs' absolute paths. Both run without this process's environment.
    explicit PolkitAuthorization(std::string blessProgram, std::string pkexecProgram = "/usr/bin/pkexec");

    Creation create(std::span<const AuthorizationItem> rights, AuthorizationFlags flags) override;
    bool bless(JobDomain domain, std::string_view label, AuthorizationRef handle,
               std::optional<BlessingError>& error) override;
    std::int32_t setRight(AuthorizationRef handle, std::string_view name, std::string_view rule,
                          std::string_view descriptionKey) override;

    /// Takes the question back that a person has not answered yet; what was agreed to goes on. May be called on any
    /// thread.
    void giveUp() { asking_.end(); }

    /// Has the installer take the helper away, after a consent of its own.
    Outcome<void> uninstall();

  private:
    /// What came of asking and, where consent was given, of the installer's work.
    struct InstallerRun {
        AuthorizationStatus status = AuthorizationStatus::success;
        std::optional<BlessingError> failure;
    };

    InstallerRun perform(const char* operation);

    std::string blessProgram_;
    std::string pkexecProgram_;
    EndableChild asking_;
    std::uint32_t last_ = 0;
    /// Each consent, and what came of its installation if that has been tried.
    std::map<std::uint32_t, std::optional<InstallerRun>> consents_;
};

}  // namespace kestrav
