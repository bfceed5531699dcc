#include "services/asker/BusAsker.h"

#include "services/asker/couldDoItself.h"

namespace kestrav {

Outcome<void> BusAsker::couldDoItself(const ConsentSubject&) {
    return kestrav::couldDoItself(process_, uid_);
}

}  // namespace kestrav
