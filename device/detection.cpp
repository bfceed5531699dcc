#include <algorithm>
#include <ostream>

#include "device/DeviceRegistry.h"
#include "device/KestravDevice.h"
#include "device/MountedVolumes.h"
#include "device/deviceName.h"

namespace kestrav {

namespace {

constexpr std::int32_t failure = 5;

void removeAll(std::string& text, std::string_view part) {
    std::string kept;
    std::size_t from = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, from)) {
        kept.append(text, from, at - from);
        from = at + part.size();
    }
    text = kept.append(text, from);
}

// The name is taken out of the optional's description, which is why a disk's name loses its own closing brackets and
// why no disk at all is the text nil.
std::string bsdNameOf(const std::optional<std::string>& disk) {
    std::string text = disk ? "Optional(" + *disk + ")" : "nil";
    removeAll(text, "Optional(");
    removeAll(text, ")");
    return text;
}

// Whole components only: /mediawiki is not in /media, but /media itself counts.
bool isIn(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

std::int32_t KestravDevice::detect(std::int64_t vendor, std::int64_t product) {
    const RegistryAnswer answer = registry_.usbDevices(vendor, product);
    if (answer.status > 0 || !answer.devices) {
        // The placeholder is printed as it stands and the status follows on a line of its own.
        console_ << "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n " << answer.status << '\n';
        return failure;
    }
    for (const UsbDevice& found : *answer.devices) {
        std::string name = deviceName(found.name);
        if (name.empty()) continue;
        device = DeviceObject{.id = found.id, .name = std::move(name), .bsdName = bsdNameOf(found.disk)};
    }
    return 0;
}

void KestravDevice::detectOrForget() {
    if (detect(vendorID_, productID_) == failure) device = DeviceObject{};
}

std::vector<std::string> KestravDevice::getDrives() {
    const std::optional<std::vector<std::string>> mounted = volumes_.mountPoints();
    std::vector<std::string> drives;
    if (!mounted) return drives;
    const std::vector<std::string> folders = volumes_.volumesFolders();
    for (const std::string& path : *mounted) {
        const auto holds = [&path](const std::string& folder) { return isIn(path, folder); };
        if (std::none_of(folders.begin(), folders.end(), holds)) continue;
        log("Found drive: " + path);
        drives.push_back(path);
    }
    return drives;
}

}  // namespace kestrav
