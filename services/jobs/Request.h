#pragma once

#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "services/gate/CommandLine.h"

namespace kestrav {

class Asker;

/// What came of a request that was handed to the table.
struct RequestEnd {
    enum class Kind {
        answered,    ///< the gate's answer
        denied,      ///< the asker may not ask; not logged yet
        notBegun,    ///< it was not wanted any more, or the service ends
        died,        ///< its process ended without a word
        notStarted,  ///< there is no process for it
    };
    Kind kind;
    std::string text;  ///< of answered and denied: the whole answer; of notStarted: the system's words
    pid_t process = -1;
    bool begun = false;
    std::string asked = {};  ///< of denied, where the gate denied it: what was asked, in one harmless line; for the log
    bool isLate = false;     ///< nobody agreed in time, and it was given up for that
};

/// Somebody's request on its way through the table. A service says with one of its own how requests come to it and how
/// they are answered.
class Request {
  public:
    virtual ~Request() = default;

    /// Who asks. Used in the request's process.
    virtual Asker& asker() = 0;
    /// What is asked, read in the request's process, where whatever goes wrong harms nobody else.
    virtual Outcome<CommandLine> read() = 0;
    /// Closes in the request's process what only the service uses: others would miss that the service has closed it.
    virtual void leaveService() = 0;
    /// Closes in the request's process what an asker who has been answered would wait for the end of.
    virtual void letGo() {}
    /// Whether its asker is still there, in the service, at the moment at which it would begin.
    virtual bool isStillWanted() const { return true; }
    /// Answers, in the service; called once, and maybe before its process has ended.
    virtual void ended(const RequestEnd& end) = 0;
};

}  // namespace kestrav
