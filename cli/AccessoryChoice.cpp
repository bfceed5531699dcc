#include "cli/AccessoryChoice.h"

#include <algorithm>
#include <string_view>

#include "base/utf8.h"
#include "device/DeviceRegistry.h"

namespace kestrav {
namespace {

constexpr std::string_view kDevices = "/dev/";

bool holds(const std::vector<std::string>& list, std::string_view value) {
    return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
}

void addWords(std::string& words, std::string_view kind, const std::vector<std::string>& list) {
    if (list.empty()) return;
    words.append(words.empty() ? "" : ", ").append("the ").append(kind).append(" ");
    for (const std::string& value : list)
        words.append(&value == &list.front() ? "" : " or ").append(AccessoryChoice::nameOfDisk(value));
}

}  // namespace

std::string_view AccessoryChoice::nameOfDisk(std::string_view disk) {
    if (disk.starts_with(kDevices)) disk.remove_prefix(kDevices.size());
    return disk;
}

bool AccessoryChoice::includes(const UsbDevice& device) const {
    const auto isItsDisk = [&](const std::string& chosen) { return device.disk == nameOfDisk(chosen); };
    return (disks.empty() || std::any_of(disks.begin(), disks.end(), isItsDisk)) &&
           holds(serials, repairedUTF8(device.serial)) && holds(ports, device.port);
}

std::string AccessoryChoice::inWords() const {
    std::string words;
    addWords(words, "disk", disks);
    addWords(words, "serial number", serials);
    addWords(words, "port", ports);
    return words;
}

}  // namespace kestrav
