#include "cli/examine.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <string_view>
#include <unistd.h>

#include "base/findTcpSocket.h"
#include "base/shownText.h"
#include "base/utf8.h"
#include "base/wholeFile.h"
#include "cli/listenerOnServicePort.h"
#include "command/CommandService.h"
#include "device/DiskNodes.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "json/tree/dataWithJSONObject.h"
#include "outcome/ServiceAnswers.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestProgram = std::size_t{64} << 20U;
// The service knows no such command, and says so.
constexpr const char* kNoCommand = "doctor";

Finding good(std::string name, std::string sentence) {
    return {std::move(name), true, true, std::move(sentence), ""};
}

Finding bad(std::string name, std::string sentence, std::string remedy) {
    return {std::move(name), false, true, std::move(sentence), std::move(remedy)};
}

/// Worth knowing, and no update depends on it.
Finding note(std::string name, std::string sentence, std::string remedy) {
    return {std::move(name), false, false, std::move(sentence), std::move(remedy)};
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

Finding accessory(const DoctorParts& parts) {
    KestravDevice& device = parts.device;
    device.detect(device.vendorID(), device.productID());
    if (!parts.registry.wasReached())
        return bad("accessory", "The device registry can't be reached.", "Is /sys mounted?");
    if (device.device.bsdName.empty()) {
        return bad("accessory", "No accessory (USB " KESTRAV_ACCESSORY_USB ") is attached.",
                   "Plug it in; 'lsusb' shows whether the computer sees it at all.");
    }
    return good("accessory", "The accessory is attached: " + shownText(device.device.name) + ".");
}

Finding disk(const DeviceObject& device) {
    if (device.bsdName.empty()) return bad("disk", "Without an accessory there is no disk.", "Plug it in.");
    if (!hasDisk(device)) {
        return isThere("/sys/bus/usb/drivers/usb-storage")
                   ? bad("disk", "The accessory has no disk yet.", "Wait some seconds, or plug it in once more.")
                   : bad("disk", "The accessory has no disk, and the kernel part that makes one is not there:",
                         "modprobe usb-storage");
    }
    const DiskNodes nodes(device.bsdName);
    if (!isThere(nodes.blockDisk))
        return bad("disk", "There is no " + nodes.blockDisk + ".", "Is /dev mounted, and udev running?");
    if (!isThere(nodes.rawDisk)) {
        return bad("disk", "The disk " + nodes.blockDisk + " has no alias " + nodes.rawDisk + ".",
                   "Install the udev rule (60-kestrav.rules), then plug the accessory in again.");
    }
    return good("disk", "The disk " + nodes.blockDisk + " and its alias " + nodes.rawDisk + " are there.");
}

std::string whoListens() {
    const auto who = listenerOnServicePort();
    return who ? "That is " + *who + ". " : "";
}

Finding stranger(const std::string& sentence) {
    return bad("service", sentence,
               whoListens() + "End it, or give it another port; then systemctl start kestrav-commandd.socket");
}

Finding ofSilence(const Unanswered& unanswered) {
    switch (unanswered.why) {
        case Unanswered::Why::notAccepted:
            return bad("service", "The service is not running:", "systemctl start kestrav-commandd.socket");
        case Unanswered::Why::notTheService:
            return stranger(unanswered.sentence);
        case Unanswered::Why::hostNotFound:
        case Unanswered::Why::connectingFailed:
            return bad("service", "The service can't be reached.", "Is the loopback interface up?");
        case Unanswered::Why::noDescriptorLeft:
            return bad("service", "Too many files are open for a connection to the service.",
                       "'ulimit -n' shows how many there may be: raise it, or do fewer things at once.");
        default:
            return bad("service", "The service does not answer:", "systemctl restart kestrav-commandd");
    }
}

Finding service(const DoctorParts& parts) {
    parts.service.runWithCommand(kNoCommand, {});
    const ServiceAnswers::Exchange* exchange = parts.answers.last();
    if (exchange == nullptr) return bad("service", "The service was not asked.", "Try again.");
    if (const auto* silence = std::get_if<Unanswered>(&exchange->end)) return ofSilence(*silence);
    if (std::get<ServiceAnswers::Given>(exchange->end).answer.meaning == Answer::Meaning::refused)
        return good("service", "The service answers on port " + std::to_string(kServicePort) + ".");
    return stranger("What answers on port " + std::to_string(kServicePort) + " is not kestrav-commandd.");
}

/// The program has its version in its own words.
Finding version(const fs::path& program) {
    const auto bytes = readWholeFile(program, kLongestProgram);
    if (!bytes) {
        return note("version", "The service's program is not installed at " + program.string() + ".",
                    "apt install kestrav-commandd");
    }
    constexpr std::string_view kOurs("kestrav-commandd " KESTRAV_VERSION "\0",
                                     sizeof "kestrav-commandd " KESTRAV_VERSION);
    if (bytes.value().find(kOurs) != std::string::npos)
        return good("version", "The service's program is of this version, " KESTRAV_VERSION ".");
    return bad("version", "The service's program is of another version than this one, " KESTRAV_VERSION ".",
               "apt upgrade; then systemctl restart kestrav-commandd");
}

bool serviceIsOurOwn() {
    const auto who = listenerOnServicePort();
    return who && who->find("kestrav-commandd") != std::string::npos && ::geteuid() != 0;
}

Finding consent(const DoctorParts& parts) {
    if (::geteuid() == 0) return good("consent", "You are root: nobody is asked for a password.");
    // Into root's processes this user does not see, so this one is the user's own.
    if (serviceIsOurOwn()) return good("consent", "The service runs as you: nobody is asked for a password.");
    if (!parts.busHas("org.freedesktop.PolicyKit1"))
        return bad("consent", "polkit, by which an administrator is asked, is not there:", "apt install polkitd");
    const bool inTerminal = ::isatty(STDIN_FILENO) == 1 && isThere(KESTRAV_PKTTYAGENT);
    const bool onDesktop = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
    if (inTerminal || onDesktop) return good("consent", "An administrator can be asked for a password.");
    return bad("consent", "Nobody can be asked for an administrator's password here.",
               "Run it in a terminal, or as root.");
}

Finding helper(const DoctorParts& parts) {
    const auto packaged = readWholeFile(parts.packagedHelper, kLongestProgram);
    const auto installed = readWholeFile(parts.installedHelper, kLongestProgram);
    if (!installed) {
        return note("helper", "The window's helper is not installed; kestravctl does without it.",
                    "The window installs it when it starts; so does kestravctl helper install.");
    }
    if (!packaged) return note("helper", "The helper is installed, and its package is not.", "apt install kestrav");
    if (packaged.value() == installed.value()) return good("helper", "The window's helper is installed.");
    return note("helper", "The installed helper is another one than the package's:", "kestravctl helper install");
}

Finding kernel() {
    const sockaddr_in nowhere{};
    if (findListeningSocket(nowhere).answered) return good("kernel", "The kernel tells the service who asks.");
    return bad("kernel", "The kernel does not tell the service who asks:", "modprobe tcp_diag");
}

Tree objectOf(const std::vector<Finding>& findings, ExitCode status) {
    Tree list = Tree::list();
    for (const Finding& finding : findings) {
        Tree object = Tree::map();
        object.setMember("name", Tree(finding.name));
        object.setMember("good", Tree(finding.isGood));
        object.setMember("needed", Tree(finding.isNeeded));
        object.setMember("finding", Tree(repairedUTF8(finding.sentence)));
        object.setMember("remedy", finding.remedy.empty() ? Tree() : Tree(finding.remedy));
        list.append(object);
    }
    Tree all = Tree::map();
    all.setMember("findings", list);
    all.setMember("status", Tree(static_cast<int>(status)));
    return all;
}

}  // namespace

std::vector<Finding> examine(const DoctorParts& parts) {
    std::vector<Finding> findings{accessory(parts)};
    findings.push_back(disk(parts.device.device));
    findings.push_back(service(parts));
    findings.push_back(version(parts.serviceProgram));
    findings.push_back(consent(parts));
    findings.push_back(helper(parts));
    findings.push_back(kernel());
    return findings;
}

ExitCode examine(const DoctorInvocation& doctor, const DoctorParts& parts) {
    const std::vector<Finding> findings = examine(parts);
    const bool works =
        std::ranges::all_of(findings, [](const Finding& finding) { return finding.isGood || !finding.isNeeded; });
    const ExitCode status = codeOf(works);
    std::ostream& out = parts.console.out;
    if (doctor.json) {
        out << dataWithJSONObject(objectOf(findings, status)) << std::endl;
        return status;
    }
    for (const Finding& finding : findings) {
        const std::string mark = finding.isGood ? "good: " : finding.isNeeded ? "bad:  " : "note: ";
        const std::string remedy = finding.remedy.empty() ? "" : " " + finding.remedy;
        out << mark << escapedForTerminal(finding.sentence + remedy) << '\n';
    }
    out << (works ? "An update can work." : "An update can't work before that is put right.") << std::endl;
    return status;
}

}  // namespace kestrav
