#include "cli/sendImage.h"

#include <chrono>

#include "base/stopProcess.h"
#include "cli/OrdinaryFile.h"
#include "cli/TransferMeter.h"
#include "cli/backUp.h"
#include "cli/complain.h"
#include "cli/endOfRequest.h"
#include "cli/lookBeforeSending.h"
#include "cli/verifyImage.h"
#include "device/KestravDevice.h"
#include "device/countReadableBytes.h"
#include "outcome/ServiceAnswers.h"
#include "outcome/WriteWatch.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kSeeWhy = "'journalctl -t kestrav-commandd' tells why.";

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

/// What the board tells of a write whose answer did not come.
UpdateResult followed(const UpdateResult& silent, const SendOptions& options, const CommandParts& parts) {
    const auto tell = [&] {
        if (!options.quiet) complain(parts.console, "No answer has come. What the service's board says is waited for.");
    };
    switch (parts.watch.follow(tell)) {
        case WriteWatch::End::wrote:
            return silent.endedWith(ExitCode::success, "The image is on " + silent.disk +
                                                           ": the service's board says that it was written and "
                                                           "compared, though no answer came.");
        case WriteWatch::End::refused:
            return silent.endedWith(ExitCode::wentWrong,
                                    "Nothing was written: the service's board says that it refused.", kSeeWhy);
        case WriteWatch::End::failed:
            return silent.endedWith(ExitCode::wentWrong, "The update failed: the service's board says so.", kSeeWhy);
        case WriteWatch::End::died:
            return silent.endedWith(ExitCode::nobodyKnows,
                                    "The service died while it wrote, so nobody knows what the accessory holds.",
                                    "Send the image again.");
        case WriteWatch::End::unknown:
            return silent;
    }
    stopProcess();
}

/// What came of it once the service has had its say, by whichever of its ways.
UpdateResult endOf(const Sending& sent, const SendOptions& options, const CommandParts& parts) {
    UpdateResult result = endOfRequest(sent.result, parts);
    const ServiceAnswers::Exchange* last = parts.answers.last();
    const auto* silence = last != nullptr ? std::get_if<Unanswered>(&last->end) : nullptr;
    const bool mayGoOn = silence != nullptr && (silence->why == Unanswered::Why::noReplyInTime ||
                                                silence->why == Unanswered::Why::closedWithoutAReply);
    if (result.status == ExitCode::nobodyKnows && mayGoOn) result = followed(result, options, parts);
    if (result.status == ExitCode::success && options.verify) result = verifyImage(sent.file, result, parts.meter);
    return result;
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
    if (auto end = lookBeforeSending(image, asked, true, update.options, parts)) return after(start, *end);
    const Backup kept = backUp(update.fleet.backup, asked, parts);
    if (kept.end) return after(start, *kept.end);
    KestravDevice& device = parts.device;
    parts.watch.expect(asked.bytes);
    const bool handedOver = firmware ? device.firmwareUpdate(image.path()) : device.iconUpdate(image.path());
    if (!handedOver && asked.bytes == 0) {
        return asked.endedWith(ExitCode::failure, "The image is empty, so nothing was handed over.",
                               "Choose another one.");
    }
    return after(start, kept.addedTo(endOf(ready.value(), update.options, parts)));
}

UpdateResult sendImage(const PushInvocation& push, const CommandParts& parts) {
    const Clock::time_point start = Clock::now();
    const auto ready = readyToSend(push.file, push.firstBlock);
    if (!ready) return cannotBeSent(ready.problem());
    const auto& [image, asked] = ready.value();
    if (auto end = lookBeforeSending(image, asked, false, push.options, parts)) return after(start, *end);
    const Backup kept = backUp(push.fleet.backup, asked, parts);
    if (kept.end) return after(start, *kept.end);
    parts.watch.expect(asked.bytes);
    parts.device.pushDevice(push.firstBlock, image.path());
    return after(start, kept.addedTo(endOf(ready.value(), push.options, parts)));
}

}  // namespace kestrav
