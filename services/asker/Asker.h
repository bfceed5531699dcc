#pragma once

#include <functional>
#include <sys/types.h>

#include "base/Outcome.h"
#include "services/asker/ConsentSubject.h"

namespace kestrav {

/// Somebody who wants something done with root's rights, as the gate sees them. The gate asks in the process of the
/// request, on its one thread.
class Asker {
  public:
    virtual ~Asker() = default;

    /// Who asks, as the kernel or the bus knows it; nothing that the asker says is believed.
    virtual uid_t uid() const = 0;
    /// Whom consent is asked for, looked up anew with each call. Refused when that can't be told.
    virtual Outcome<ConsentSubject> subject() = 0;
    /// For an asker who needs no consent: whether `subject`, the process that asks, could do without the service what
    /// it asks for, and still is the one that asks.
    virtual Outcome<void> couldDoItself(const ConsentSubject& subject) = 0;
    /// Whether a person may be asked for a password on the asker's behalf.
    virtual bool mayBePrompted() const = 0;
    /// Before a person is asked about `subject`: waits until nobody is asked on behalf of another request of the same.
    /// Refused with what somebody has just said to such a request, or where the request was given up meanwhile; then
    /// nobody is to be asked.
    virtual Outcome<void> awaitTurn(const ConsentSubject&) { return {}; }
    /// After that turn: what came of asking.
    virtual void tellDecision(const Outcome<void>&) {}
    /// `handler` is called when the asker is answered before a person has decided, and the question goes on without
    /// the request.
    virtual void whenAnswered(const std::function<void()>&) {}
    /// Whether the answer is still wanted; asked again and again while a person thinks about it.
    virtual bool stillWants() = 0;
    /// Asked once, at the last moment at which nothing has happened yet. May wait. After `false` nothing happens.
    virtual bool mayBegin() = 0;
};

}  // namespace kestrav
