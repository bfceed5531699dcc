#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "services/asker/Consent.h"

namespace kestrav {

/// Answers as it is told, and keeps who was asked about.
class FakeConsent final : public Consent {
  public:
    std::optional<Problem> problem;           ///< none: it is given
    bool needsAPerson = true;                 ///< to be prompted before it is given
    std::optional<Problem> turnsEverybody;    ///< away, at once
    std::function<void()> meanwhile = [] {};  ///< happens while a person would think about it
    bool waits = false;                       ///< as long as the answer is wanted
    std::vector<ConsentSubject> askedAbout;
    std::vector<bool> mayPrompt;
    std::vector<Intent> intents;

    Outcome<void> canBeGivenTo(uid_t) const override {
        return turnsEverybody ? Outcome<void>(*turnsEverybody) : Outcome<void>();
    }
    Outcome<void> given(const ConsentSubject& subject, const Intent& intent, bool prompts,
                        const std::function<bool()>& stillWanted) override {
        const bool isHopeless = needsAPerson && !prompts;
        if (isHopeless) return refused("an administrator has to agree.");
        askedAbout.push_back(subject);
        mayPrompt.push_back(prompts);
        intents.push_back(intent);
        meanwhile();
        while (waits && stillWanted())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (waits) return refused("given up.");
        return problem ? Outcome<void>(*problem) : Outcome<void>();
    }
};

}  // namespace kestrav
