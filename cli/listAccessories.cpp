#include "cli/listAccessories.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "base/shownText.h"
#include "base/utf8.h"
#include "cli/Backends.h"
#include "cli/complain.h"
#include "cli/textTable.h"
#include "device/MountedVolumes.h"
#include "device/attachedAccessories.h"
#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

constexpr const char* kOutOfReach = "The device registry can't be reached. Is /sys mounted?";

constexpr const char* kNone = "No accessory (USB " KESTRAV_ACCESSORY_USB ") is attached. Plug it in and try again.";

struct Accessory {
    UsbDevice device;
    std::vector<std::string> mounted;
};

std::vector<Accessory> withMounts(std::vector<UsbDevice> devices, MountedVolumes& volumes) {
    sortByPort(devices);
    const std::vector<MountedDevice> mounts = volumes.mountedDevices();
    std::vector<Accessory> accessories;
    for (UsbDevice& device : devices) {
        std::vector<std::string> mounted;
        for (const MountedDevice& mount : mounts) {
            const auto& numbers = device.blockNumbers;
            if (std::find(numbers.begin(), numbers.end(), mount.number) != numbers.end()) mounted.push_back(mount.path);
        }
        accessories.push_back({std::move(device), std::move(mounted)});
    }
    return accessories;
}

// "16 MiB", "7.5 GiB": with one digit behind the point where it is no whole number.
std::string shownSize(std::uint64_t bytes) {
    constexpr std::array kUnits{"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
    auto value = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < kUnits.size(); ++unit)
        value /= 1024;
    std::array<char, 32> text{};
    const bool isWhole = value * 10 == static_cast<double>(static_cast<std::uint64_t>(value) * 10);
    std::snprintf(text.data(), text.size(), isWhole ? "%.0f %s" : "%.1f %s", value, kUnits.at(unit));
    return text.data();
}

std::string shownMounts(const std::vector<std::string>& paths) {
    std::string shown;
    for (const std::string& path : paths)
        shown += (shown.empty() ? "" : ", ") + escapedForTerminal(path);
    return shown;
}

void printTable(const Console& console, const std::vector<Accessory>& accessories) {
    std::vector<std::vector<std::string>> rows{{"DISK", "SERIAL", "PORT", "SIZE", "NAME", "MOUNTED"}};
    for (const auto& [device, mounted] : accessories) {
        rows.push_back({device.disk.value_or(""), escapedForTerminal(device.serial), escapedForTerminal(device.port),
                        device.diskBytes ? shownSize(*device.diskBytes) : "", escapedForTerminal(device.name),
                        shownMounts(mounted)});
    }
    console.out << textTable(rows) << std::flush;
}

Tree textOrNull(const std::string& text) {
    return text.empty() ? Tree() : Tree(text);
}

Tree objectOf(const Accessory& accessory) {
    const UsbDevice& device = accessory.device;
    Tree mounted = Tree::list();
    for (const std::string& path : accessory.mounted)
        mounted.append(Tree(repairedUTF8(path)));
    Tree object = Tree::map();
    object.setMember("disk", textOrNull(device.disk.value_or("")));
    object.setMember("serial", textOrNull(device.serial));
    object.setMember("port", Tree(repairedUTF8(device.port)));
    object.setMember("bytes", device.diskBytes ? Tree(*device.diskBytes) : Tree());
    object.setMember("name", Tree(device.name));
    object.setMember("id", Tree(device.id));
    object.setMember("mounted", std::move(mounted));
    return object;
}

void printJson(const Console& console, const std::vector<Accessory>& accessories, ExitCode status,
               const std::string& problem) {
    Tree list = Tree::list();
    for (const Accessory& accessory : accessories)
        list.append(objectOf(accessory));
    Tree object = Tree::map();
    object.setMember("accessories", std::move(list));
    object.setMember("status", Tree(static_cast<int>(status)));
    object.setMember("problem", textOrNull(problem));
    console.out << dataWithJSONObject(object) << std::endl;
}

ExitCode printNone(const ListInvocation& list, const Console& console, ExitCode status, const std::string& problem) {
    if (list.json) printJson(console, {}, status, problem);
    complain(console, problem);
    return status;
}

}  // namespace

ExitCode listAccessories(const ListInvocation& list, const CommandParts& parts) {
    auto devices = attachedAccessories(parts.backends.registry);
    if (!devices) return printNone(list, parts.console, ExitCode::registryUnreachable, kOutOfReach);
    if (devices->empty()) return printNone(list, parts.console, ExitCode::noAccessory, kNone);
    const std::vector<Accessory> accessories = withMounts(std::move(*devices), parts.backends.volumes);
    if (list.json) {
        printJson(parts.console, accessories, ExitCode::success, "");
    } else {
        printTable(parts.console, accessories);
    }
    return ExitCode::success;
}

}  // namespace kestrav
