#include "services/asker/obtainConsent.h"

#include <unistd.h>

#include "services/asker/Asker.h"
#include "services/asker/Consent.h"

namespace kestrav {
namespace {

Outcome<void> decided(Consent& consent, Asker& asker, const ConsentSubject& subject, const Intent& intent) {
    const auto stillWanted = [&asker] { return asker.stillWants(); };
    // Nobody is bothered then, so nobody is bothered twice, and there is nobody to wait for: where consent was given
    // before, or a rule gives it, many requests at once don't use their time up in a line.
    auto unasked = consent.given(subject, intent, false, stillWanted);
    if (unasked || !asker.mayBePrompted()) return unasked;
    if (auto turn = asker.awaitTurn(subject); !turn) return turn;
    auto decision = consent.given(subject, intent, true, stillWanted);
    asker.tellDecision(decision);
    return decision;
}

}  // namespace

bool needsConsent(uid_t uid) {
    return uid != 0 && uid != ::geteuid();
}

Outcome<void> mayAsk(const Consent& consent, uid_t uid) {
    return needsConsent(uid) ? consent.canBeGivenTo(uid) : Outcome<void>();
}

Outcome<ConsentSubject> whoAsks(const Consent& consent, Asker& asker) {
    if (const auto welcome = mayAsk(consent, asker.uid()); !welcome) return welcome.problem();
    return asker.subject();
}

Outcome<void> obtainConsent(Consent& consent, Asker& asker, const Outcome<ConsentSubject>& subject,
                            const Intent& intent) {
    if (!subject) return subject.problem();
    if (!needsConsent(asker.uid())) return asker.couldDoItself(subject.value());
    if (auto given = decided(consent, asker, subject.value(), intent); !given) return given;
    // A connection that was passed on meanwhile is somebody else's.
    const auto now = asker.subject();
    if (!now) return now.problem();
    if (now.value() != subject.value()) return refused("the connection passed to another process.");
    return {};
}

}  // namespace kestrav
