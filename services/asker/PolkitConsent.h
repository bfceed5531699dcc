#pragma once

#include <chrono>

#include "services/asker/Consent.h"

namespace kestrav {

/// polkit's answer about the action com.corvatel.kestrav.run, over a connection to the system bus that is made for
/// each question: a computer's rules or an administrator decide. The prompt names the program that asks and the intent,
/// in the words of the action's message, which come in the languages of the window. Blocks. Any user may be asked
/// about, so this process has to be root's.
class PolkitConsent final : public Consent {
  public:
    static constexpr std::chrono::minutes kPatience{5};

    /// `patience` is how long a person may take.
    explicit PolkitConsent(std::chrono::milliseconds patience = kPatience) : patience_(patience) {}

    Outcome<void> canBeGivenTo(uid_t) const override { return {}; }
    Outcome<void> given(const ConsentSubject& subject, const Intent& intent, bool mayPrompt,
                        const std::function<bool()>& stillWanted) override;

  private:
    std::chrono::milliseconds patience_;
};

}  // namespace kestrav
