#pragma once

#include <span>
#include <string>
#include <string_view>

#include "command/Unanswered.h"

namespace kestrav {

/// Takes what a service answers, as a value. The log gets the same as sentences for people; no program has to read it.
///
/// For each exchange `asked` is called first, before a connection is made, and then one of the other two, when the log
/// has its line. `CommandService` makes all calls on the thread that runs its operation; `Job` calls `asked` on the
/// thread of its caller and the other two on the connection's own. None of them may throw, or use what calls it.
class AnswerSink {
  public:
    virtual ~AnswerSink() = default;

    /// An exchange begins; what is asked is as it goes over the wire. For those who have to know what an answer is to.
    virtual void asked(std::string_view /*command*/, std::span<const std::string> /*arguments*/) {}

    /// The answer as it came: it need not be text, nor come from the service that was meant; the helper's may be empty.
    /// `parseAnswer` tells what it means.
    virtual void answered(std::string_view bytes) = 0;

    /// The exchange ended without an answer.
    virtual void unanswered(const Unanswered& unanswered) = 0;
};

}  // namespace kestrav
