#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// Decides whose requests are taken at all, as soon as somebody connects. Answers at once: a judge that has to ask a
/// person belongs behind this one, into the process that carries the request out.
class CallerJudge {
  public:
    virtual ~CallerJudge() = default;

    /// The sentence with which that user is turned away; nothing when the user's requests are taken.
    virtual std::optional<std::string> refusal(uid_t uid) const = 0;
};

/// Root and the service's own user need no asking; everyone else is turned away. For a service that is not root's,
/// which polkit would not answer about others.
class RootAndOwnUser final : public CallerJudge {
  public:
    /// `own` is the user that the service runs as.
    explicit RootAndOwnUser(uid_t own) : own_(own) {}

    std::optional<std::string> refusal(uid_t uid) const override {
        if (uid == 0 || uid == own_) return std::nullopt;
        return "user " + std::to_string(uid) + " may not write the accessory; an administrator has to.";
    }

  private:
    uid_t own_;
};

/// Everybody's requests are taken; whether they are carried out is then a question of consent.
class EverybodyWithConsent final : public CallerJudge {
  public:
    std::optional<std::string> refusal(uid_t) const override { return std::nullopt; }
};

}  // namespace kestrav
