#include "cli/pullBlocks.h"

#include "cli/endOfRequest.h"
#include "device/KestravDevice.h"

namespace kestrav {

UpdateResult pullBlocks(const PullInvocation& pull, const CommandParts& parts) {
    parts.device.pullDevice(pull.firstBlock, pull.count);
    UpdateResult asked;
    asked.firstBlock = pull.firstBlock;
    return endOfRequest(asked, parts);
}

}  // namespace kestrav
