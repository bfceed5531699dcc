#include "cli/lookUp.h"

#include <ostream>
#include <string>
#include <vector>

#include "base/shownText.h"
#include "base/utf8.h"
#include "cli/ChosenDevices.h"
#include "cli/complain.h"
#include "cli/tellResult.h"
#include "device/KestravDevice.h"
#include "json/tree/dataWithJSONObject.h"

namespace kestrav {
namespace {

void printJson(const Console& console, const Tree& tree) {
    console.out << dataWithJSONObject(tree) << std::endl;
}

void printDevice(const Console& console, const DeviceObject& device, bool json) {
    const bool diskIsThere = hasDisk(device);
    if (json) {
        Tree object = Tree::map();
        object.setMember("found", Tree(true));
        object.setMember("name", Tree(device.name));
        object.setMember("disk", diskIsThere ? Tree(device.bsdName) : Tree());
        object.setMember("id", Tree(device.id));
        printJson(console, object);
        return;
    }
    console.out << "name: " << escapedForTerminal(device.name) << "\ndisk: " << (diskIsThere ? device.bsdName : "none")
                << "\nid: " << device.id << std::endl;
}

}  // namespace

ExitCode lookUp(const DetectInvocation& detect, const CommandParts& parts) {
    KestravDevice& device = parts.device;
    if (device.detect(device.vendorID(), device.productID()) != 0) {
        const auto end = UpdateResult().endedWith(ExitCode::registryUnreachable,
                                                  "The device registry can't be reached.", "Is /sys mounted?");
        return tellResult(end, detect.json, parts.console);
    }
    if (!device.device.bsdName.empty()) {
        printDevice(parts.console, device.device, detect.json);
        return ExitCode::success;
    }
    if (detect.json) {
        Tree object = Tree::map();
        object.setMember("found", Tree(false));
        printJson(parts.console, object);
    }
    complain(parts.console, parts.chosen.whyNone() + " " + parts.chosen.remedyForNone());
    return ExitCode::noAccessory;
}

ExitCode lookUp(const DrivesInvocation& drives, const CommandParts& parts) {
    const std::vector<std::string> paths = parts.device.getDrives();
    if (drives.json) {
        Tree list = Tree::list();
        for (const std::string& path : paths)
            list.append(Tree(repairedUTF8(path)));
        printJson(parts.console, list);
    } else if (paths.empty()) {
        complain(parts.console, "No drive is mounted below /media or /run/media.");
    }
    return ExitCode::success;
}

}  // namespace kestrav
