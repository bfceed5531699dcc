#pragma once

#include <string>

#include "services/asker/Consent.h"

namespace kestrav {

/// Nobody's consent, for a service that is not root's: polkit would not answer it about others.
class NoConsent final : public Consent {
  public:
    Outcome<void> canBeGivenTo(uid_t uid) const override {
        return refused("user " + std::to_string(uid) + " may not write the accessory; an administrator has to.");
    }
    Outcome<void> given(const ConsentSubject&, const Intent&, bool, const std::function<bool()>&) override {
        return refused("an administrator has to agree, and there is no way to ask for a password here.");
    }
};

}  // namespace kestrav
