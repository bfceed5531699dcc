#include "device/linux/UdevDeviceRegistry.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdio>
#include <dirent.h>
#include <libudev.h>
#include <linux/magic.h>
#include <memory>
#include <string_view>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

#include "base/stopProcess.h"

namespace kestrav {

namespace {

constexpr std::int32_t kOutOfReach = 5;
constexpr std::int64_t kHighestIdentifier = 0xFFFF;  // idVendor and idProduct have 16 bits

struct UdevRelease {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* enumeration) const { udev_enumerate_unref(enumeration); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};
struct DirectoryClose {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using UdevPtr = std::unique_ptr<udev, UdevRelease>;
using UdevEnumeratePtr = std::unique_ptr<udev_enumerate, UdevRelease>;
using UdevDevicePtr = std::unique_ptr<udev_device, UdevRelease>;

// libudev does not report an empty /sys as an error: it finds no devices there.
bool sysfsIsMounted() {
    struct statfs info {};
    return ::statfs("/sys", &info) == 0 && info.f_type == SYSFS_MAGIC;
}

UdevEnumeratePtr enumerationOf(udev* context, const char* subsystem) {
    UdevEnumeratePtr enumeration(udev_enumerate_new(context));
    require(enumeration && udev_enumerate_add_match_subsystem(enumeration.get(), subsystem) >= 0);
    return enumeration;
}

void matchIdentifier(udev_enumerate* enumeration, const char* attribute, std::int64_t identifier) {
    std::array<char, 8> text{};
    // As the kernel prints them: four hexadecimal digits.
    std::snprintf(text.data(), text.size(), "%04x", static_cast<unsigned>(identifier));
    require(udev_enumerate_add_match_sysattr(enumeration, attribute, text.data()) >= 0);
}

// Calls `take` for each device found, in order. A scan that fails has found none.
template <typename Take>
void forEachFound(udev* context, udev_enumerate* enumeration, Take take) {
    if (udev_enumerate_scan_devices(enumeration) < 0) return;
    udev_list_entry* entry = udev_enumerate_get_list_entry(enumeration);
    for (; entry != nullptr; entry = udev_list_entry_get_next(entry)) {
        // A device may have been unplugged since the scan.
        const UdevDevicePtr found(udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
        if (found) take(found.get());
    }
}

std::string_view orEmpty(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

template <typename Number = std::uint32_t>
Number numberAttribute(udev_device* device, const char* attribute) {
    const std::string_view text = orEmpty(udev_device_get_sysattr_value(device, attribute));
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// Where every block device is in sysfs, in the order of their paths. Each has a link in this one folder, and reading
// the links is much less work than to walk through all that is below a USB device.
std::vector<std::string> blockDevicePaths() {
    const std::unique_ptr<DIR, DirectoryClose> folder(::opendir("/sys/class/block"));
    std::vector<std::string> paths;
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        std::array<char, PATH_MAX> target{};
        const std::string link = std::string("/sys/class/block/") + entry->d_name;
        const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
        if (length <= 0) continue;
        std::string_view path(target.data(), static_cast<std::size_t>(length));
        // A link is relative: as many "../" as there are folders, then the path that begins with "devices".
        while (path.starts_with("../"))
            path.remove_prefix(3);
        paths.push_back("/sys/" + std::string(path));
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Fills in the first disk of `paths` that is below the USB device, and what is on it. False when a disk went away
// meanwhile: then the device is going, too.
bool describeDisk(UsbDevice& device, udev* context, udev_device* parent, const std::vector<std::string>& paths) {
    const std::string below = "/sys" + std::string(orEmpty(udev_device_get_devpath(parent))) + "/";
    std::string ofDisk;
    for (const std::string& path : paths) {
        if (!path.starts_with(below)) continue;
        const bool isOnDisk = !ofDisk.empty() && path.starts_with(ofDisk);
        const UdevDevicePtr block(udev_device_new_from_syspath(context, path.c_str()));
        // Partitions come and go with the disk's table.
        if (!block && isOnDisk) continue;
        if (!block) return false;
        if (!device.disk && orEmpty(udev_device_get_devtype(block.get())) == "disk") {
            device.disk = std::string(orEmpty(udev_device_get_sysname(block.get())));
            if (udev_device_get_sysattr_value(block.get(), "size") != nullptr)
                // sysfs counts in 512 bytes, whatever the disk's own block is.
                device.diskBytes = numberAttribute<std::uint64_t>(block.get(), "size") * 512;
            ofDisk = path + "/";
            device.blockNumbers.push_back(udev_device_get_devnum(block.get()));
        } else if (isOnDisk) {
            device.blockNumbers.push_back(udev_device_get_devnum(block.get()));
        }
    }
    return true;
}

// What the kernel counts devices by. Each one that is plugged in gets a new number, so it tells them apart.
std::string deviceNumber(udev_device* device) {
    return std::string(orEmpty(udev_device_get_sysattr_value(device, "devnum")));
}

// Whether what is at this place now is the same device as before. Looked up anew: libudev remembers what it has read.
bool isStillThere(udev* context, udev_device* found) {
    const UdevDevicePtr now(udev_device_new_from_syspath(context, udev_device_get_syspath(found)));
    return now && deviceNumber(now.get()) == deviceNumber(found);
}

// Absent for a device that was pulled out while it was looked at: half of what it said would pass for all of it.
std::optional<UsbDevice> described(udev* context, udev_device* found, const std::vector<std::string>& blockPaths) {
    UsbDevice device;
    // First of all: libudev keeps what it says, and what is read between this look and the last one is of one device.
    deviceNumber(found);
    device.id = (numberAttribute(found, "busnum") << 16) | (numberAttribute(found, "devnum") & 0xFFFF);
    device.port = orEmpty(udev_device_get_sysname(found));
    device.name = orEmpty(udev_device_get_sysattr_value(found, "product"));
    if (device.name.empty()) device.name = device.port;
    device.serial = orEmpty(udev_device_get_sysattr_value(found, "serial"));
    if (!describeDisk(device, context, found, blockPaths) || !isStillThere(context, found)) return std::nullopt;
    return device;
}

}  // namespace

RegistryAnswer UdevDeviceRegistry::usbDevices(std::int64_t vendor, std::int64_t product) {
    const UdevPtr context(udev_new());
    if (!context || !sysfsIsMounted()) return {.status = kOutOfReach, .devices = std::nullopt};
    RegistryAnswer answer{.status = 0, .devices = std::vector<UsbDevice>()};
    if (vendor < 0 || vendor > kHighestIdentifier || product < 0 || product > kHighestIdentifier) return answer;
    const UdevEnumeratePtr enumeration = enumerationOf(context.get(), "usb");
    matchIdentifier(enumeration.get(), "idVendor", vendor);
    matchIdentifier(enumeration.get(), "idProduct", product);
    std::optional<std::vector<std::string>> blockPaths;
    forEachFound(context.get(), enumeration.get(), [&](udev_device* found) {
        // The interfaces of a USB device belong to the same subsystem and are passed over.
        if (orEmpty(udev_device_get_devtype(found)) != "usb_device") return;
        if (!blockPaths) blockPaths = blockDevicePaths();
        if (auto device = described(context.get(), found, *blockPaths)) answer.devices->push_back(std::move(*device));
    });
    return answer;
}

}  // namespace kestrav
