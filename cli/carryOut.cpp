#include "cli/carryOut.h"

#include <ostream>
#include <variant>

#include "cli/complain.h"
#include "cli/lookUp.h"
#include "cli/moveBytes.h"
#include "cli/pullBlocks.h"
#include "cli/sendImage.h"
#include "cli/tellResult.h"

namespace kestrav {
namespace {

/// Leads each kind of invocation to its family of commands.
struct Families {
    const CommandParts& parts;

    ExitCode operator()(const DetectInvocation& detect) const { return lookUp(detect, parts); }
    ExitCode operator()(const DrivesInvocation& drives) const { return lookUp(drives, parts); }
    ExitCode operator()(const UpdateInvocation& update) const {
        return tellResult(sendImage(update, parts), parts.console);
    }
    ExitCode operator()(const PushInvocation& push) const { return tellResult(sendImage(push, parts), parts.console); }
    ExitCode operator()(const PullInvocation& pull) const { return tellResult(pullBlocks(pull, parts), parts.console); }
    ExitCode operator()(const ReadInvocation& read) const { return moveBytes(read, parts); }
    ExitCode operator()(const WriteInvocation& write) const { return moveBytes(write, parts); }
};

}  // namespace

ExitCode carryOut(const Invocation& invocation, const CommandParts& parts) {
    const ExitCode code = std::visit(Families{parts}, invocation);
    if (parts.console.out.flush()) return code;
    complain(parts.console, "Standard output can't be written; what was printed is not complete.");
    return code == ExitCode::success ? ExitCode::wrongCall : code;
}

}  // namespace kestrav
