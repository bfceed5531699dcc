#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <sys/stat.h>

#include "base/SystemLog.h"
#include "base/openStandardDescriptors.h"
#include "protocol/accessory.h"
#include "protocol/names.h"
#include "services/asker/PolkitConsent.h"
#include "services/disk/UdevBlockDevices.h"
#include "services/gate/BoardNote.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "services/helper/HelperService.h"

namespace {

constexpr const char* kHelp =
    "Usage: kestrav-helper [--help | --version]\n"
    "\n"
    "Unmounts, reads and writes the accessory's disk for those whom polkit lets: the service\n" KESTRAV_HELPER_LABEL
    " on the system bus, which starts it when it is needed. Touches no other disk than the\n"
    "accessory's (USB " KESTRAV_ACCESSORY_USB
    "). Ends itself when it is idle, and on SIGTERM after the work that runs.\n";

int serve(kestrav::SystemLog& systemLog) {
    kestrav::RequestLog log(systemLog);
    const kestrav::UdevBlockDevices devices;
    const kestrav::MountinfoTable mounts;
    kestrav::PolkitConsent consent;
    kestrav::Gate gate(consent, devices, mounts, log, kestrav::BoardNote::folderOfService());
    return kestrav::HelperService(gate, log).run() ? 0 : 1;
}

}  // namespace

int main(int count, char** words) {
    if (!kestrav::openStandardDescriptors()) return 1;
    const std::string_view word = count == 2 ? words[1] : "";
    if (word == "--help") {
        std::fputs(kHelp, stdout);
        return 0;
    }
    if (word == "--version") {
        std::puts("kestrav-helper " KESTRAV_VERSION);
        return 0;
    }
    if (count != 1) {
        std::fputs(kHelp, stderr);
        return 2;
    }
    ::umask(077);
    // Before the first line: whoever reads standard error may have gone, or may not read.
    std::signal(SIGPIPE, SIG_IGN);
    kestrav::SyslogSystemLog log("kestrav-helper", kestrav::SyslogSystemLog::SlowReader::missesLines);
    try {
        return serve(log);
    } catch (const std::exception& error) {
        log.write(error.what());
        return 1;
    }
}
