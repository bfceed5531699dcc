#include <iostream>
#include <memory>
#include <new>

#include "base/SystemLog.h"
#include "cli/Commands.h"
#include "cli/TerminalLog.h"
#include "cli/TransferMeter.h"
#include "command/CommandService.h"
#include "device/KestravDevice.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"

namespace {

int perform(const kestrav::Invocation& invocation) {
    using namespace kestrav;
    std::ostream& progress = putsDataOnStandardOutput(invocation) ? std::cerr : std::cout;
    SyslogSystemLog systemLog("kestravctl");
    CommandService commandService(systemLog);
    UdevDeviceRegistry registry;
    MountinfoVolumes volumes;
    PosixDiskCalls diskCalls;
    TransferMeter meter(diskCalls);
    KestravDevice device(registry, volumes, meter, commandService, progress);
    device.setParent(std::make_shared<TerminalLog>(progress));
    return static_cast<int>(carryOut(invocation, device, meter, {std::cout, std::cerr}));
}

}  // namespace

int main(int argc, char** argv) {
    using namespace kestrav;
    const auto parsed = parseCommandLine(argc, argv, std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) {
        return static_cast<int>(std::cout.flush() ? *code : ExitCode::wrongCall);
    }
    try {
        return perform(std::get<Invocation>(parsed));
    } catch (const std::bad_alloc&) {
        std::cerr << "kestravctl: There is not enough memory for that. Take a smaller piece at a time.\n";
        return static_cast<int>(ExitCode::wrongCall);
    }
}
