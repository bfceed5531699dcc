#include "cli/lookBeforeSending.h"

#include "base/QuietSystemLog.h"
#include "cli/Backends.h"
#include "cli/ChosenDevices.h"
#include "cli/OrdinaryFile.h"
#include "cli/compareDigest.h"
#include "cli/complain.h"
#include "cli/endOfRequest.h"
#include "cli/warningsAbout.h"
#include "command/CommandService.h"
#include "device/KestravDevice.h"
#include "outcome/ServiceAnswers.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

// The service knows no such command, and says so: it is there, and is the one that is meant.
constexpr const char* kNoCommand = "dry-run";

bool turnedItDown(const ServiceAnswers& answers) {
    const auto* given = answers.last() != nullptr ? std::get_if<ServiceAnswers::Given>(&answers.last()->end) : nullptr;
    return given != nullptr && given->answer.meaning == Answer::Meaning::refused;
}

/// What would become of it, without the writing.
UpdateResult rehearsed(const OrdinaryFile& image, const UpdateResult& asked, const CommandParts& parts) {
    KestravDevice& device = parts.device;
    device.detect(device.vendorID(), device.productID());
    ServiceAnswers answers;
    QuietSystemLog log;
    if (!device.device.bsdName.empty())
        CommandService(log, parts.backends.endpoint, &answers).runWithCommand(kNoCommand, {});
    UpdateResult end = endOfRequest(asked, {device, parts.registry, parts.chosen, parts.meter, answers, parts.watch,
                                            parts.console, parts.backends});
    end.answer.clear();
    if (!turnedItDown(answers) || !hasDisk(device.device)) return end;
    const auto room = parts.chosen.taken() ? parts.chosen.taken()->diskBytes : std::nullopt;
    const auto needed = static_cast<std::uint64_t>(asked.firstBlock * kBlockBytes + asked.bytes);
    if (room && needed > *room) {
        return end.endedWith(ExitCode::wentWrong,
                             "The image does not fit: it would end at byte " + std::to_string(needed) + " of " +
                                 end.disk + ", which has " + std::to_string(*room) + ".",
                             "Choose another one.");
    }
    return end.endedWith(ExitCode::success, "Nothing was written, as was asked for: the " +
                                                std::to_string(asked.bytes) + " bytes of " + image.path() +
                                                " would go to " + end.disk + " from block " +
                                                std::to_string(asked.firstBlock) + " on.");
}

}  // namespace

std::optional<UpdateResult> lookBeforeSending(const OrdinaryFile& image, const UpdateResult& asked, bool isAnUpdate,
                                              const SendOptions& options, const CommandParts& parts) {
    if (const auto same = compareDigest(image, options); !same) {
        const bool isTheFiles = same.problem().kind == Problem::Kind::refused;
        return asked.endedWith(isTheFiles ? ExitCode::wrongCall : ExitCode::failure, same.problem().sentence,
                               isTheFiles ? "" : "Nothing was handed over. Fetch the image again.");
    }
    if (isAnUpdate)
        for (const std::string& warning : warningsAbout(image, asked))
            complain(parts.console, "Warning: " + warning);
    if (options.dryRun && asked.bytes > 0) return rehearsed(image, asked, parts);
    return std::nullopt;
}

}  // namespace kestrav
