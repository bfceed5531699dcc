#include "services/disk/UdevBlockDevices.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <libudev.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/sysmacros.h>
#include <system_error>

#include "base/systemWords.h"
#include "protocol/accessory.h"
#include "services/disk/forEachLine.h"

namespace kestrav {
namespace {

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

/// Looks at devices, and remembers when it saw nothing because the system lacked something: an attribute that can't be
/// read for want of a descriptor must not pass for one that isn't there.
class Look {
  public:
    Look() { errno = 0; }

    /// Passes on what libudev returned; a null together with errno of a shortage is noted.
    template <class T>
    T* seen(T* result) {
        if (result == nullptr && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) shortage_ = errno;
        errno = 0;
        return result;
    }
    std::string_view attribute(udev_device* device, const char* name) {
        return textOrEmpty(seen(::udev_device_get_sysattr_value(device, name)));
    }
    std::optional<std::uint64_t> numberAttribute(udev_device* device, const char* name) {
        const std::string_view text = attribute(device, name);
        std::uint64_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
        return value;
    }
    udev_device* parent(udev_device* device, const char* subsystem, const char* type) {
        return seen(::udev_device_get_parent_with_subsystem_devtype(device, subsystem, type));
    }

    /// Refused when the look was not a good one.
    Outcome<void> sawAll(dev_t number) const {
        if (shortage_ == 0) return {};
        return refused("the disk " + shownNumber(number) + " can't be examined: " + systemWords(shortage_) + ".");
    }
    static std::string shownNumber(dev_t number) {
        return std::to_string(major(number)) + ":" + std::to_string(minor(number));
    }

  private:
    int shortage_ = 0;
};

bool belongsToAccessory(Look& look, udev_device* device) {
    udev_device* usb = look.parent(device, "usb", "usb_device");
    if (usb == nullptr) return false;
    return look.attribute(usb, "idVendor") == std::string_view(kAccessoryVendorDigits) &&
           look.attribute(usb, "idProduct") == std::string_view(kAccessoryProductDigits);
}

/// The whole disk that `device` is or is a part of; it belongs to `device`.
udev_device* diskOf(Look& look, udev_device* device, BlockDevice::Kind kind) {
    if (kind == BlockDevice::Kind::disk) return device;
    return look.parent(device, "block", "disk");
}

std::optional<BlockDevice::Kind> kindOf(Look& look, udev_device* device) {
    const std::string_view type = textOrEmpty(look.seen(::udev_device_get_devtype(device)));
    if (type == "disk") return BlockDevice::Kind::disk;
    if (type == "partition") return BlockDevice::Kind::partition;
    return std::nullopt;
}

/// Anything that later steps reckon with must be there and make sense, else the device can't be judged.
std::optional<BlockDevice> describe(Look& look, udev_device* device) {
    const auto kind = kindOf(look, device);
    if (!kind) return std::nullopt;
    udev_device* disk = diskOf(look, device, *kind);
    const auto sectors = look.numberAttribute(device, "size");
    if (disk == nullptr || !sectors || *sectors > (UINT64_MAX >> 10U)) return std::nullopt;
    const std::uint64_t blockSize = look.numberAttribute(disk, "queue/logical_block_size").value_or(512);
    const bool powerOfTwo = (blockSize & (blockSize - 1)) == 0;
    if (blockSize < 512 || blockSize > 65536 || !powerOfTwo) return std::nullopt;
    const std::uint64_t partition =
        *kind == BlockDevice::Kind::disk ? 0 : look.numberAttribute(device, "partition").value_or(0);
    return BlockDevice{*kind,
                       ::udev_device_get_devnum(device),
                       std::string(textOrEmpty(::udev_device_get_sysname(device))),
                       std::string(textOrEmpty(::udev_device_get_sysname(disk))),
                       partition,
                       belongsToAccessory(look, device),
                       look.numberAttribute(disk, "ro").value_or(0) != 0,
                       *sectors * 512,  // sysfs counts in 512 bytes whatever the disk's own block is
                       static_cast<std::uint32_t>(blockSize),
                       look.numberAttribute(disk, "diskseq")};
}

/// Sysfs paths of the disk and of its partitions.
Outcome<std::vector<std::string>> familyPaths(udev* context, udev_device* disk) {
    const UdevEnumeratePtr list(::udev_enumerate_new(context));
    int result = list ? ::udev_enumerate_add_match_parent(list.get(), disk) : -ENOMEM;
    if (result >= 0) result = ::udev_enumerate_add_match_subsystem(list.get(), "block");
    if (result >= 0) result = ::udev_enumerate_scan_devices(list.get());
    if (result < 0) return refused("the disk's partitions can't be listed: " + systemWords(-result) + ".");
    std::vector<std::string> paths;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, ::udev_enumerate_get_list_entry(list.get())) {
        paths.emplace_back(textOrEmpty(::udev_list_entry_get_name(entry)));
    }
    return paths;
}

/// "NAME (dm-0)" for what the device mapper made, which people know by that name; else the kernel's name.
std::string nameOfHolder(const std::filesystem::path& device) {
    std::string name = device.filename();
    forEachLine(device / "dm/name", [&name](std::string_view line) {
        name = std::string(line) + " (" + name + ")";
        return false;
    });
    return name;
}

Problem unknown(dev_t number) {
    return refused("the system does not know the disk with the number " + Look::shownNumber(number) + ".");
}

}  // namespace

Outcome<BlockDevice> UdevBlockDevices::find(dev_t number) const {
    const UdevPtr context(::udev_new());
    if (!context) return unknown(number);
    Look look;
    const UdevDevicePtr device(look.seen(::udev_device_new_from_devnum(context.get(), 'b', number)));
    auto described = device ? describe(look, device.get()) : std::nullopt;
    if (const auto seen = look.sawAll(number); !seen) return seen.problem();
    if (!described) return unknown(number);
    return std::move(*described);
}

Outcome<std::vector<dev_t>> UdevBlockDevices::diskAndPartitions(dev_t disk) const {
    const UdevPtr context(::udev_new());
    if (!context) return unknown(disk);
    Look look;
    const UdevDevicePtr device(look.seen(::udev_device_new_from_devnum(context.get(), 'b', disk)));
    if (const auto seen = look.sawAll(disk); !seen) return seen.problem();
    if (!device) return unknown(disk);
    const auto paths = familyPaths(context.get(), device.get());
    if (!paths) return paths.problem();
    std::vector<dev_t> numbers;
    for (const std::string& path : paths.value()) {
        const UdevDevicePtr member(look.seen(::udev_device_new_from_syspath(context.get(), path.c_str())));
        if (member && kindOf(look, member.get())) numbers.push_back(::udev_device_get_devnum(member.get()));
    }
    if (const auto seen = look.sawAll(disk); !seen) return seen.problem();
    // Without the disk itself the list can't be a whole one either.
    if (std::ranges::find(numbers, disk) == numbers.end()) return unknown(disk);
    return numbers;
}

std::vector<std::string> UdevBlockDevices::builtOnTopOf(dev_t disk) const {
    std::vector<std::string> names;
    const UdevPtr context(::udev_new());
    if (!context) return names;
    const UdevDevicePtr device(::udev_device_new_from_devnum(context.get(), 'b', disk));
    if (!device) return names;
    const auto paths = familyPaths(context.get(), device.get());
    if (!paths) return names;
    for (const std::string& path : paths.value()) {
        std::error_code error;
        const std::filesystem::directory_iterator end;
        for (std::filesystem::directory_iterator at(path + "/holders", error); !error && at != end;
             at.increment(error)) {
            names.push_back(nameOfHolder(at->path()));
        }
    }
    return names;
}

}  // namespace kestrav
