#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <utility>

#include "protocol/accessory.h"
#include "protocol/wire.h"
#include "services/asker/NoConsent.h"
#include "services/asker/PolkitConsent.h"
#include "services/commandd/Server.h"
#include "services/commandd/listeningSocket.h"
#include "services/disk/SysfsBlockDevices.h"
#include "services/gate/BoardNote.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "services/jobs/serviceMain.h"

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

int serve(kestrav::RequestLog& log) {
    auto listener = kestrav::listeningSocket();
    if (!listener) {
        log.write(listener.problem().sentence);
        return 1;
    }
    const kestrav::SysfsBlockDevices devices;
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
    return kestrav::serviceMain(count, words, {"kestrav-commandd", "kestrav-commandd " KESTRAV_VERSION, kHelp}, serve);
}
