#include <iostream>
#include <memory>

#include "base/SystemLog.h"
#include "cli/Commands.h"
#include "cli/TerminalLog.h"
#include "command/CommandService.h"
#include "device/KestravDevice.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"

int main(int argc, char** argv) {
    using namespace kestrav;
    const auto parsed = parseCommandLine(argc, argv, std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) return static_cast<int>(*code);
    const auto& invocation = std::get<Invocation>(parsed);
    std::ostream& progress = putsDataOnStandardOutput(invocation) ? std::cerr : std::cout;

    SyslogSystemLog systemLog("kestravctl");
    CommandService commandService(systemLog);
    UdevDeviceRegistry registry;
    MountinfoVolumes volumes;
    PosixDiskCalls diskCalls;
    KestravDevice device(registry, volumes, diskCalls, commandService, progress);
    device.setParent(std::make_shared<TerminalLog>(progress));
    return static_cast<int>(carryOut(invocation, device, {std::cout, std::cerr}));
}
