#pragma once

#include <map>
#include <string>
#include <vector>

#include "command/Authorization.h"

namespace kestrav {

/// An authorization service without a person: it keeps the consents it gave, the helpers it installed and the rights
/// it registered, and answers as its public fields say.
class FakeAuthorization final : public Authorization {
  public:
    struct Consent {
        std::vector<AuthorizationItem> rights;
        AuthorizationFlags flags = 0;
    };
    struct Right {
        AuthorizationRef handle;
        std::string rule;
        std::string descriptionKey;
    };
    struct Helper {
        JobDomain domain;
        AuthorizationRef handle;
    };

    std::int32_t createStatus = 0;
    bool givesHandle = true;
    bool blesses = true;
    std::optional<BlessingError> blessError;
    std::int32_t setRightStatus = 0;

    std::vector<Consent> asked;
    std::map<std::string, Helper, std::less<>> helpers;
    std::map<std::string, Right, std::less<>> rights;

    Creation create(std::span<const AuthorizationItem> items, AuthorizationFlags flags) override {
        asked.push_back({{items.begin(), items.end()}, flags});
        if (createStatus != 0) return {createStatus, {}};
        if (!givesHandle) return {0, {}};
        return {0, AuthorizationRef{static_cast<std::uint32_t>(asked.size())}};
    }

    bool bless(JobDomain domain, std::string_view label, AuthorizationRef handle,
               std::optional<BlessingError>& error) override {
        error = blessError;
        if (!blesses) return false;
        helpers.insert_or_assign(std::string(label), Helper{domain, handle});
        return true;
    }

    std::int32_t setRight(AuthorizationRef handle, std::string_view name, std::string_view rule,
                          std::string_view descriptionKey) override {
        rights.insert_or_assign(std::string(name), Right{handle, std::string(rule), std::string(descriptionKey)});
        return setRightStatus;
    }
};

}  // namespace kestrav
