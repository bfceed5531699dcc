#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "base/StandardDescriptors.h"
#include "base/SystemLog.h"
#include "services/commandd/CallerJudge.h"
#include "services/commandd/ListeningSocket.h"
#include "services/commandd/RequestRunner.h"
#include "services/commandd/Server.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"
#include "services/privileged/RequestLog.h"
#include "services/privileged/UdevBlockDevices.h"

namespace {

constexpr const char* help =
    "Usage: kestrav-commandd [--help | --version]\n"
    "\n"
    "Writes the accessory's disk for the updater. Listens on 127.0.0.1:9090, or on the socket that systemd hands\n"
    "over, takes one JSON request per connection and answers with one line.\n"
    "Touches no other disk than the accessory's (USB 10d6:fd01). Serves root and its own user, and where it runs as "
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
    const kestrav::EverybodyWithConsent everybody;
    const kestrav::RootAndOwnUser ownUser(::geteuid());
    const bool root = ::geteuid() == 0;
    const kestrav::CallerJudge& judge = root ? static_cast<const kestrav::CallerJudge&>(everybody) : ownUser;
    kestrav::PolkitConsent consent;
    kestrav::Gate gate(devices, mounts, log);
    kestrav::RequestRunner runner(consent, gate, log);
    kestrav::Server server(std::move(listener.value()), judge, runner, log);
    log.write("ready");
    ::sd_notify(0, "READY=1");
    return server.run() ? 0 : 1;
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
        std::puts("kestrav-commandd " KESTRAV_VERSION);
        return 0;
    }
    if (count != 1) {
        std::fputs(help, stderr);
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
