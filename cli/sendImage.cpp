#include "cli/sendImage.h"

#include <chrono>

#include "cli/OrdinaryFile.h"
#include "cli/TransferMeter.h"
#include "cli/endOfRequest.h"
#include "cli/verifyImage.h"
#include "device/KestravDevice.h"
#include "device/countReadableBytes.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

/// A file that is going to be sent, and how it ends until it has been.
struct Sending {
    OrdinaryFile file;
    UpdateResult result;
};

/// The file, looked at; a problem's sentence says what is wrong with it.
Outcome<Sending> readyToSend(const std::string& path, std::int64_t firstBlock) {
    auto opened = OrdinaryFile::open(path);
    if (!opened) return opened.problem();
    const auto bytes = countReadableBytes(opened.value().path());
    if (!bytes) return refused(cannotBeReadToItsEnd(opened.value()));
    UpdateResult asked;
    asked.firstBlock = firstBlock;
    asked.bytes = static_cast<std::int64_t>(*bytes);
    return Sending{std::move(opened.value()), asked};
}

UpdateResult cannotBeSent(const Problem& problem) {
    return UpdateResult().endedWith(ExitCode::wrongCall, problem.sentence);
}

UpdateResult after(Clock::time_point start, UpdateResult result) {
    result.taken = Clock::now() - start;
    return result;
}

}  // namespace

UpdateResult sendImage(const UpdateInvocation& update, const CommandParts& parts) {
    const Clock::time_point start = Clock::now();
    const bool firmware = update.kind == ImageKind::firmware;
    const auto ready = readyToSend(update.file, firmware ? kFirmwareBlock : kIconBlock);
    if (!ready) return cannotBeSent(ready.problem());
    const auto& [image, asked] = ready.value();
    KestravDevice& device = parts.device;
    const bool handedOver = firmware ? device.firmwareUpdate(image.path()) : device.iconUpdate(image.path());
    if (!handedOver && asked.bytes == 0) {
        return asked.endedWith(ExitCode::failure, "The image is empty, so nothing was handed over.",
                               "Choose another one.");
    }
    UpdateResult result = endOfRequest(asked, parts);
    if (result.status == ExitCode::success && update.options.verify) result = verifyImage(image, result, parts.meter);
    return after(start, result);
}

UpdateResult sendImage(const PushInvocation& push, const CommandParts& parts) {
    const Clock::time_point start = Clock::now();
    const auto ready = readyToSend(push.file, push.firstBlock);
    if (!ready) return cannotBeSent(ready.problem());
    const auto& [image, asked] = ready.value();
    parts.device.pushDevice(push.firstBlock, image.path());
    UpdateResult result = endOfRequest(asked, parts);
    if (result.status == ExitCode::success && push.options.verify) result = verifyImage(image, result, parts.meter);
    return after(start, result);
}

}  // namespace kestrav
