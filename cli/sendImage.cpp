#include "cli/sendImage.h"

#include "cli/OrdinaryFile.h"
#include "cli/complain.h"
#include "cli/verifyImage.h"
#include "device/KestravDevice.h"
#include "device/countReadableBytes.h"
#include "protocol/accessory.h"

namespace kestrav {

ExitCode sendImage(const UpdateInvocation& update, const CommandParts& parts) {
    const auto opened = OrdinaryFile::open(update.file);
    if (!opened) return wrongCall(parts.console, opened.problem().sentence);
    const auto& image = opened.value();
    if (!countReadableBytes(image.path())) return wrongCall(parts.console, cannotBeReadToItsEnd(image));
    const bool firmware = update.kind == ImageKind::firmware;
    KestravDevice& device = parts.device;
    const bool handedOver = firmware ? device.firmwareUpdate(image.path()) : device.iconUpdate(image.path());
    if (!handedOver || !update.verify) return codeOf(handedOver);
    return verifyImage(image, (firmware ? kFirmwareBlock : kIconBlock) * kBlockBytes, parts);
}

ExitCode sendImage(const PushInvocation& push, const CommandParts& parts) {
    const auto opened = OrdinaryFile::open(push.file);
    if (!opened) return wrongCall(parts.console, opened.problem().sentence);
    return codeOf(parts.device.pushDevice(push.firstBlock, opened.value().path()));
}

}  // namespace kestrav
