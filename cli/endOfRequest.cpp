#include "cli/endOfRequest.h"

#include "cli/ChosenDevices.h"
#include "cli/resultOfExchange.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "outcome/ServiceAnswers.h"

namespace kestrav {

UpdateResult endOfRequest(UpdateResult asked, const CommandParts& parts) {
    const DeviceObject& device = parts.device.device;
    if (!parts.registry.wasReached()) {
        return asked.endedWith(ExitCode::registryUnreachable, "The device registry can't be reached.",
                               "Is /sys mounted?");
    }
    if (device.bsdName.empty()) {
        return asked.endedWith(ExitCode::failure, parts.chosen.whyNone(), parts.chosen.remedyForNone());
    }
    asked.disk = device.bsdName;
    if (parts.chosen.taken()) {
        asked.serial = parts.chosen.taken()->serial;
        asked.port = parts.chosen.taken()->port;
    }
    const ServiceAnswers::Exchange* last = parts.answers.last();
    if (last == nullptr) return asked.endedWith(ExitCode::failure, "Nothing was handed over.");
    UpdateResult end = resultOfExchange(*last, asked);
    if (hasDisk(device) || end.status != ExitCode::wentWrong) return end;
    return end.endedWith(ExitCode::wentWrong, "The accessory has no disk yet, so nothing was done.",
                         "Wait some seconds and try again; if that does not help, plug it in once more.");
}

}  // namespace kestrav
