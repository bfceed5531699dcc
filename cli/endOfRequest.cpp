#include "cli/endOfRequest.h"

#include "cli/ServiceAnswers.h"
#include "cli/WatchedRegistry.h"
#include "cli/judgeExchange.h"
#include "device/KestravDevice.h"
#include "protocol/accessory.h"

namespace kestrav {

UpdateResult endOfRequest(UpdateResult asked, const CommandParts& parts) {
    const DeviceObject& device = parts.device.device;
    if (!parts.registry.wasReached()) {
        return asked.endedWith(ExitCode::registryUnreachable, "The device registry can't be reached.",
                               "Is /sys mounted?");
    }
    if (device.bsdName.empty()) {
        return asked.endedWith(ExitCode::failure, "No accessory (USB " KESTRAV_ACCESSORY_USB ") is attached.",
                               "Plug it in and try again.");
    }
    asked.disk = device.bsdName;
    const ServiceAnswers::Exchange* last = parts.answers.last();
    if (last == nullptr) return asked.endedWith(ExitCode::failure, "Nothing was handed over.");
    const UpdateResult end = judgeExchange(*last, asked);
    if (hasDisk(device) || end.status != ExitCode::wentWrong) return end;
    return end.endedWith(ExitCode::wentWrong, "The accessory has no disk yet, so nothing was done.",
                         "Wait some seconds and try again; if that does not help, plug it in once more.");
}

}  // namespace kestrav
