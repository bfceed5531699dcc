#include "cli/carryOut.h"

#include <ostream>
#include <variant>

#include "cli/ServiceAnswers.h"
#include "cli/complain.h"
#include "cli/lookUp.h"
#include "cli/moveBytes.h"
#include "cli/pullBlocks.h"
#include "cli/sendImage.h"

namespace kestrav {
namespace {

/// Leads each kind of invocation to its family of commands.
struct Families {
    const CommandParts& parts;

    ExitCode operator()(const DetectInvocation& detect) const { return lookUp(detect, parts); }
    ExitCode operator()(const DrivesInvocation& drives) const { return lookUp(drives, parts); }
    ExitCode operator()(const UpdateInvocation& update) const { return sendImage(update, parts); }
    ExitCode operator()(const PushInvocation& push) const { return sendImage(push, parts); }
    ExitCode operator()(const PullInvocation& pull) const { return pullBlocks(pull, parts); }
    ExitCode operator()(const ReadInvocation& read) const { return moveBytes(read, parts); }
    ExitCode operator()(const WriteInvocation& write) const { return moveBytes(write, parts); }
};

/// The log has such an answer as it came, so that on the terminal it would pass for the service's.
void warnOfStrangers(const CommandParts& parts) {
    for (const auto& exchange : parts.answers.exchanges()) {
        const auto* unanswered = std::get_if<Unanswered>(&exchange.end);
        if (unanswered != nullptr && unanswered->why == Unanswered::Why::notTheService)
            complain(parts.console, unanswered->sentence);
    }
}

}  // namespace

ExitCode carryOut(const Invocation& invocation, const CommandParts& parts) {
    const ExitCode code = std::visit(Families{parts}, invocation);
    warnOfStrangers(parts);
    if (parts.console.out.flush()) return code;
    complain(parts.console, "Standard output can't be written; what was printed is not complete.");
    return code == ExitCode::success ? ExitCode::wrongCall : code;
}

}  // namespace kestrav
