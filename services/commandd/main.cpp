#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "base/SystemLog.h"
#include "base/openStandardDescriptors.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"
#include "services/asker/NoConsent.h"
#include "services/asker/PolkitConsent.h"
#include "services/commandd/Server.h"
#include "services/commandd/listeningSocket.h"
#include "services/disk/UdevBlockDevices.h"
#include "services/gate/BoardNote.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"

namespace {

constexpr const char* kHelp =
    "Usage: kestrav-commandd [--help | --version]\n"
    "\n"
    "Writes the accessory's disk for the updater. Listens on " KESTRAV_SERVICE_PLACE
    ", or on the socket that systemd hands\n"
    "over, takes one JSON request per connection and answers with one line.\n"
    "Touches no other disk than the accessory's (USB " KESTRAV_ACCESSORY_USB
    "). Serves root and its own user, and where it runs as "
    "root\n"
    "everybody else to whom polkit gives consent.\n"
    "SIGTERM stops it after the write that is running.\n";

int serve(kestrav::SystemLog& systemLog) {
    kestrav::RequestLog log(systemLog);
    auto listener = kestrav::listeningSocket();
    if (!listener) {
        log.write(listener.problem().sentence);
        return 1;
    }
    const kestrav::UdevBlockDevices devices;
    const kestrav::MountinfoTable mounts;
    kestrav::PolkitConsent polkit;
    kestrav::NoConsent none;
    kestrav::Consent& consent = ::geteuid() == 0 ? static_cast<kestrav::Consent&>(polkit) : none;
    kestrav::Gate gate(consent, devices, mounts, log, kestrav::BoardNote::folderOfService());
    kestrav::Server server(std::move(listener.value()), gate, log);
    log.write("ready");
    ::sd_notify(0, "READY=1");
    return server.run() ? 0 : 1;
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
        std::puts("kestrav-commandd " KESTRAV_VERSION);
        return 0;
    }
    if (count != 1) {
        std::fputs(kHelp, stderr);
        return 2;
    }
    // Before the first line: whoever reads standard error may have gone.
    std::signal(SIGPIPE, SIG_IGN);
    kestrav::SyslogSystemLog log("kestrav-commandd", kestrav::SyslogSystemLog::SlowReader::missesLines);
    try {
        return serve(log);
    } catch (const std::exception& error) {
        log.write(error.what());
        return 1;
    }
}
