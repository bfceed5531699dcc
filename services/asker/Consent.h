#pragma once

#include <functional>
#include <sys/types.h>

#include "base/Outcome.h"
#include "services/asker/ConsentSubject.h"
#include "services/asker/Intent.h"

namespace kestrav {

/// The asker does not want it any more.
Problem givenUpBeforeConsent();

/// Somebody was asked and said no, or typed a wrong password; or a rule says no.
Problem deniedByAPerson();
/// Whether it is that, and not that nobody could be asked.
bool isDecisionOfAPerson(const Problem& problem);

/// Whether somebody may have commands run with the service's rights who could not do it without the service. Whatever
/// goes wrong is no consent: everything but a value is a refusal.
class Consent {
  public:
    virtual ~Consent() = default;

    /// Whether it is worth asking for that user at all. Answers at once and asks nobody, so that a service can turn
    /// somebody away before anything is read.
    virtual Outcome<void> canBeGivenTo(uid_t uid) const = 0;

    /// Consent to `intent`. Where `mayPrompt`, a person may be asked and be waited for, but only as long as
    /// `stillWanted` says so.
    virtual Outcome<void> given(const ConsentSubject& subject, const Intent& intent, bool mayPrompt,
                                const std::function<bool()>& stillWanted) = 0;
};

}  // namespace kestrav
