#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <sys/stat.h>

#include "base/StandardDescriptors.h"
#include "base/SystemLog.h"
#include "services/helper/HelperService.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"
#include "services/privileged/RequestLog.h"
#include "services/privileged/UdevBlockDevices.h"

namespace {

constexpr const char* help =
    "Usage: kestrav-helper [--help | --version]\n"
    "\n"
    "Unmounts, reads and writes the accessory's disk for those whom polkit lets: the service\n"
    "com.corvatel.KestravHelper on the system bus, which starts it when it is needed. Touches no other disk than the\n"
    "accessory's (USB 10d6:fd01). Ends itself when it is idle, and on SIGTERM after the work that runs.\n";

int serve(kestrav::SystemLog& systemLog) {
    kestrav::RequestLog log(systemLog);
    const kestrav::UdevBlockDevices devices;
    const kestrav::MountinfoTable mounts;
    kestrav::Gate gate(devices, mounts, log);
    kestrav::PolkitConsent consent;
    return kestrav::HelperService(consent, gate, log).run() ? 0 : 1;
}

}  // namespace

int main(int count, char** words) {
    if (!kestrav::openStandardDescriptors()) return 1;
    const std::string_view word = count == 2 ? words[1] : "";
    if (word == "--help") {
        std::fputs(help, stdout);
        return 0;
    }
    if (word == "--version") {
        std::puts("kestrav-helper " KESTRAV_VERSION);
        return 0;
    }
    if (count != 1) {
        std::fputs(help, stderr);
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
