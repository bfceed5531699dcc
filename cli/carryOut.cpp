#include "cli/carryOut.h"

#include <ostream>
#include <variant>

#include "cli/awaitAccessory.h"
#include "cli/complain.h"
#include "cli/listAccessories.h"
#include "cli/lookUp.h"
#include "cli/moveBytes.h"
#include "cli/pullBlocks.h"
#include "cli/sendImage.h"
#include "cli/sendToAll.h"
#include "cli/tellResult.h"

namespace kestrav {
namespace {

/// Leads each kind of invocation to its family of commands.
struct Families {
    const CommandParts& parts;

    ExitCode operator()(const DetectInvocation& detect) const { return lookUp(detect, parts); }
    ExitCode operator()(const ListInvocation& list) const { return listAccessories(list, parts); }
    ExitCode operator()(const DrivesInvocation& drives) const { return lookUp(drives, parts); }
    ExitCode operator()(const UpdateInvocation& update) const { return sent(update); }
    ExitCode operator()(const PushInvocation& push) const { return sent(push); }
    ExitCode operator()(const PullInvocation& pull) const {
        return tellResult(pullBlocks(pull, parts), false, parts.console);
    }
    template <typename Image>
    ExitCode sent(const Image& image) const {
        if (image.fleet.all) {
            const auto send = [&image](const CommandParts& ofOne) { return sendImage(image, ofOne); };
            return sendToAll({image.accessory, image.options, image.fleet, send}, parts.backends, parts.console);
        }
        if (image.fleet.wait) awaitAccessory(*image.fleet.wait, image.accessory, parts);
        return told(sendImage(image, parts), image.options);
    }
    ExitCode told(const UpdateResult& result, const SendOptions& options) const {
        if (options.quiet && !options.json && result.status == ExitCode::success) return result.status;
        return tellResult(result, options.json, parts.console);
    }
    ExitCode operator()(const SaveInvocation& save) const {
        return tellResult(pullBlocks(save, parts), false, parts.console);
    }
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
