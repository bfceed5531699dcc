#include "services/asker/obtainConsent.h"

#include <unistd.h>

#include "services/asker/Asker.h"
#include "services/asker/Consent.h"

namespace kestrav {

bool needsConsent(uid_t uid) {
    return uid != 0 && uid != ::geteuid();
}

Outcome<void> mayAsk(const Consent& consent, uid_t uid) {
    return needsConsent(uid) ? consent.canBeGivenTo(uid) : Outcome<void>();
}

Outcome<void> obtainConsent(Consent& consent, Asker& asker, const Intent& intent) {
    if (!needsConsent(asker.uid())) return asker.couldDoItself();
    if (auto possible = consent.canBeGivenTo(asker.uid()); !possible) return possible;
    const auto subject = asker.subject();
    if (!subject) return subject.problem();
    const auto stillWanted = [&asker] { return asker.stillWants(); };
    if (auto given = consent.given(subject.value(), intent, asker.mayBePrompted(), stillWanted); !given) return given;
    // A connection that was passed on meanwhile is somebody else's.
    const auto now = asker.subject();
    if (!now) return now.problem();
    if (now.value() != subject.value()) return refused("the connection passed to another process.");
    return {};
}

}  // namespace kestrav
