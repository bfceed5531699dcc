#include "cli/pullBlocks.h"

#include "device/KestravDevice.h"

namespace kestrav {

ExitCode pullBlocks(const PullInvocation& pull, const CommandParts& parts) {
    parts.device.pullDevice(pull.firstBlock, pull.count);
    // The result is always empty; what tells is whether there was a disk to ask for.
    return codeOf(!parts.device.device.bsdName.empty());
}

}  // namespace kestrav
