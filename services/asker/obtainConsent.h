#pragma once

#include <sys/types.h>

#include "base/Outcome.h"
#include "services/asker/ConsentSubject.h"

namespace kestrav {

class Asker;
class Consent;
struct Intent;

/// False for root and for the user that the service runs as. Both could do without the service what they ask it for,
/// and obtainConsent() makes sure that the process that asks could.
bool needsConsent(uid_t uid);

/// Refused when that user's requests need not even be read.
Outcome<void> mayAsk(const Consent& consent, uid_t uid);

/// Who asks. Nobody is looked for whose requests need not even be read.
Outcome<ConsentSubject> whoAsks(const Consent& consent, Asker& asker);

/// Obtains consent to `intent` for an asker who needs it, and makes sure that the one it was given for is the one who
/// asks. Of an asker who needs none it makes sure that nothing is done that they could not do themselves. `subject`
/// is what whoAsks() told for this request. Blocks, maybe until a person has decided.
Outcome<void> obtainConsent(Consent& consent, Asker& asker, const Outcome<ConsentSubject>& subject,
                            const Intent& intent);

}  // namespace kestrav
