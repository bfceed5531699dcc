#include <sys/stat.h>

#include "protocol/accessory.h"
#include "protocol/names.h"
#include "services/asker/PolkitConsent.h"
#include "services/disk/SysfsBlockDevices.h"
#include "services/gate/BoardNote.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "services/helper/HelperService.h"
#include "services/jobs/serviceMain.h"

namespace {

constexpr const char* kHelp =
    "Usage: kestrav-helper [--help | --version]\n"
    "\n"
    "Unmounts, reads and writes the accessory's disk for those whom polkit lets: the service\n" KESTRAV_HELPER_LABEL
    " on the system bus, which starts it when it is needed. Touches no other disk than the\n"
    "accessory's (USB " KESTRAV_ACCESSORY_USB
    "). Ends itself when it is idle, and on SIGTERM after the work that runs.\n";

int serve(kestrav::RequestLog& log) {
    ::umask(077);
    const kestrav::SysfsBlockDevices devices;
    const kestrav::MountinfoTable mounts;
    kestrav::PolkitConsent consent;
    kestrav::Gate gate(consent, devices, mounts, log, kestrav::BoardNote::folderOfService());
    return kestrav::HelperService(gate, log).run() ? 0 : 1;
}

}  // namespace

int main(int count, char** words) {
    return kestrav::serviceMain(count, words, {"kestrav-helper", "kestrav-helper " KESTRAV_VERSION, kHelp}, serve);
}
