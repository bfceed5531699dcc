#include "services/privileged/UdevBlockDevices.h"

#include <charconv>
#include <filesystem>
#include <libudev.h>
#include <memory>
#include <string_view>
#include <system_error>

namespace kestrav {
namespace {

// The accessory's USB identifiers, as sysfs writes them.
constexpr std::string_view accessoryVendor = "10d6";
constexpr std::string_view accessoryProduct = "fd01";

struct UdevRelease {
    void operator()(udev* context) const noexcept { ::udev_unref(context); }
    void operator()(udev_device* device) const noexcept { ::udev_device_unref(device); }
    void operator()(udev_enumerate* list) const noexcept { ::udev_enumerate_unref(list); }
};

using UdevPtr = std::unique_ptr<udev, UdevRelease>;
using UdevDevicePtr = std::unique_ptr<udev_device, UdevRelease>;
using UdevEnumeratePtr = std::unique_ptr<udev_enumerate, UdevRelease>;

std::string_view textOrEmpty(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

std::string_view attribute(udev_device* device, const char* name) {
    return textOrEmpty(::udev_device_get_sysattr_value(device, name));
}

std::optional<std::uint64_t> numberAttribute(udev_device* device, const char* name) {
    const std::string_view text = attribute(device, name);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool belongsToAccessory(udev_device* device) {
    udev_device* usb = ::udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    if (usb == nullptr) return false;
    return attribute(usb, "idVendor") == accessoryVendor && attribute(usb, "idProduct") == accessoryProduct;
}

/// The whole disk that `device` is or is a part of; it belongs to `device`.
udev_device* diskOf(udev_device* device, BlockDevice::Kind kind) {
    if (kind == BlockDevice::Kind::disk) return device;
    return ::udev_device_get_parent_with_subsystem_devtype(device, "block", "disk");
}

std::optional<BlockDevice::Kind> kindOf(udev_device* device) {
    const std::string_view type = textOrEmpty(::udev_device_get_devtype(device));
    if (type == "disk") return BlockDevice::Kind::disk;
    if (type == "partition") return BlockDevice::Kind::partition;
    return std::nullopt;
}

/// Anything that later steps reckon with must be there and make sense, else the device can't be judged.
std::optional<BlockDevice> describe(udev_device* device) {
    const auto kind = kindOf(device);
    if (!kind) return std::nullopt;
    udev_device* disk = diskOf(device, *kind);
    const auto sectors = numberAttribute(device, "size");
    if (disk == nullptr || !sectors || *sectors > (UINT64_MAX >> 10U)) return std::nullopt;
    const std::uint64_t blockSize = numberAttribute(disk, "queue/logical_block_size").value_or(512);
    const bool powerOfTwo = (blockSize & (blockSize - 1)) == 0;
    if (blockSize < 512 || blockSize > 65536 || !powerOfTwo) return std::nullopt;
    const std::uint64_t partition =
        *kind == BlockDevice::Kind::disk ? 0 : numberAttribute(device, "partition").value_or(0);
    return BlockDevice{*kind,
                       ::udev_device_get_devnum(device),
                       std::string(textOrEmpty(::udev_device_get_sysname(device))),
                       std::string(textOrEmpty(::udev_device_get_sysname(disk))),
                       partition,
                       belongsToAccessory(device),
                       numberAttribute(disk, "ro").value_or(0) != 0,
                       *sectors * 512,  // sysfs counts in 512 bytes whatever the disk's own block is
                       static_cast<std::uint32_t>(blockSize),
                       numberAttribute(disk, "diskseq")};
}

/// Sysfs paths of the disk and of its partitions.
std::vector<std::string> familyPaths(udev* context, udev_device* disk) {
    std::vector<std::string> paths;
    const UdevEnumeratePtr list(::udev_enumerate_new(context));
    if (!list || ::udev_enumerate_add_match_parent(list.get(), disk) < 0) return paths;
    if (::udev_enumerate_add_match_subsystem(list.get(), "block") < 0) return paths;
    if (::udev_enumerate_scan_devices(list.get()) < 0) return paths;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, ::udev_enumerate_get_list_entry(list.get())) {
        paths.emplace_back(textOrEmpty(::udev_list_entry_get_name(entry)));
    }
    return paths;
}

}  // namespace

std::optional<BlockDevice> UdevBlockDevices::find(dev_t number) const {
    const UdevPtr context(::udev_new());
    if (!context) return std::nullopt;
    const UdevDevicePtr device(::udev_device_new_from_devnum(context.get(), 'b', number));
    if (!device) return std::nullopt;
    return describe(device.get());
}

std::vector<dev_t> UdevBlockDevices::diskAndPartitions(dev_t disk) const {
    std::vector<dev_t> numbers;
    const UdevPtr context(::udev_new());
    if (!context) return numbers;
    const UdevDevicePtr device(::udev_device_new_from_devnum(context.get(), 'b', disk));
    if (!device) return numbers;
    for (const std::string& path : familyPaths(context.get(), device.get())) {
        const UdevDevicePtr member(::udev_device_new_from_syspath(context.get(), path.c_str()));
        if (member && kindOf(member.get())) numbers.push_back(::udev_device_get_devnum(member.get()));
    }
    return numbers;
}

std::vector<std::string> UdevBlockDevices::builtOnTopOf(dev_t disk) const {
    std::vector<std::string> names;
    const UdevPtr context(::udev_new());
    if (!context) return names;
    const UdevDevicePtr device(::udev_device_new_from_devnum(context.get(), 'b', disk));
    if (!device) return names;
    for (const std::string& path : familyPaths(context.get(), device.get())) {
        std::error_code error;
        const std::filesystem::directory_iterator end;
        for (std::filesystem::directory_iterator at(path + "/holders", error); !error && at != end;
             at.increment(error)) {
            names.push_back(at->path().filename().string());
        }
    }
    return names;
}

}  // namespace kestrav
