#include "services/disk/SysfsBlockDevices.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>
#include <sys/sysmacros.h>
#include <system_error>
#include <utility>

#include "base/fieldIn.h"
#include "base/systemWords.h"
#include "protocol/accessory.h"
#include "services/disk/SysfsLook.h"
#include "services/disk/forEachLine.h"

namespace kestrav {
namespace {

constexpr std::string_view kDevices = "/sys/devices";

std::string parentOf(const std::string& folder) {
    return folder.substr(0, folder.rfind('/'));
}

std::string nameOf(const std::string& folder) {
    return folder.substr(folder.rfind('/') + 1);
}

/// What the kernel tells of a device when it comes: a line "NAME=VALUE" for each fact.
class Announcement {
  public:
    Announcement(SysfsLook& look, const std::string& folder) : text_(look.attribute(folder, "uevent").value_or("")) {}

    std::string_view type() const { return fieldIn(text_, "DEVTYPE="); }
    std::optional<dev_t> number() const {
        const auto majorNumber = numberIn("MAJOR=");
        const auto minorNumber = numberIn("MINOR=");
        if (!majorNumber || !minorNumber) return std::nullopt;
        return makedev(*majorNumber, *minorNumber);
    }

  private:
    std::optional<unsigned> numberIn(std::string_view name) const {
        const std::string_view digits = fieldIn(text_, name);
        unsigned value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
        return value;
    }

    std::string text_;
};

/// Whether the nearest USB device on the way up is the accessory.
bool belongsToAccessory(SysfsLook& look, const std::string& device) {
    for (std::string at = parentOf(device); at.size() > kDevices.size(); at = parentOf(at)) {
        if (look.subsystem(at) != "usb" || Announcement(look, at).type() != "usb_device") continue;
        return look.attribute(at, "idVendor") == kAccessoryVendorDigits &&
               look.attribute(at, "idProduct") == kAccessoryProductDigits;
    }
    return false;
}

/// The folder of the whole disk that `device` is or is a part of; empty where there is none.
std::string diskOf(SysfsLook& look, const std::string& device, BlockDevice::Kind kind) {
    if (kind == BlockDevice::Kind::disk) return device;
    const std::string above = parentOf(device);
    const bool isDisk = look.subsystem(above) == "block" && Announcement(look, above).type() == "disk";
    return isDisk ? above : std::string();
}

std::optional<BlockDevice::Kind> kindOf(const Announcement& device) {
    if (device.type() == "disk") return BlockDevice::Kind::disk;
    if (device.type() == "partition") return BlockDevice::Kind::partition;
    return std::nullopt;
}

/// Anything that later steps reckon with must be there and make sense, else the device can't be judged.
std::optional<BlockDevice> describe(SysfsLook& look, const std::string& device, dev_t number) {
    const Announcement announced(look, device);
    const auto kind = kindOf(announced);
    // Another one may have the folder by now.
    if (!kind || announced.number() != number) return std::nullopt;
    const std::string disk = diskOf(look, device, *kind);
    const auto sectors = look.numberAttribute(device, "size");
    if (disk.empty() || !sectors || *sectors > (UINT64_MAX >> 10U)) return std::nullopt;
    const std::uint64_t blockSize = look.numberAttribute(disk, "queue/logical_block_size").value_or(512);
    const bool powerOfTwo = (blockSize & (blockSize - 1)) == 0;
    if (blockSize < 512 || blockSize > 65536 || !powerOfTwo) return std::nullopt;
    const std::uint64_t partition =
        *kind == BlockDevice::Kind::disk ? 0 : look.numberAttribute(device, "partition").value_or(0);
    return BlockDevice{*kind,
                       number,
                       nameOf(device),
                       nameOf(disk),
                       partition,
                       belongsToAccessory(look, device),
                       look.numberAttribute(disk, "ro").value_or(0) != 0,
                       *sectors * 512,  // sysfs counts in 512 bytes whatever the disk's own block is
                       static_cast<std::uint32_t>(blockSize),
                       look.numberAttribute(disk, "diskseq")};
}

/// The folders of the disk and of its partitions.
std::vector<std::string> familyFolders(SysfsLook& look, const std::string& disk) {
    std::vector<std::string> folders{disk};
    for (const std::string& name : look.foldersIn(disk)) {
        std::string folder = disk;
        folder.append("/").append(name);
        if (Announcement(look, folder).type() == "partition") folders.push_back(std::move(folder));
    }
    std::sort(folders.begin() + 1, folders.end());
    return folders;
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
    return refused("the system does not know the disk with the number " + SysfsLook::shownNumber(number) + ".");
}

/// Refused when the look was not a good one.
Outcome<void> sawAll(const SysfsLook& look, dev_t number) {
    if (look.shortage() == 0) return {};
    return refused("the disk " + SysfsLook::shownNumber(number) +
                   " can't be examined: " + systemWords(look.shortage()) + ".");
}

}  // namespace

Outcome<BlockDevice> SysfsBlockDevices::find(dev_t number) const {
    SysfsLook look;
    const auto folder = look.blockDevice(number);
    auto described = folder ? describe(look, *folder, number) : std::nullopt;
    if (const auto seen = sawAll(look, number); !seen) return seen.problem();
    if (!described) return unknown(number);
    return std::move(*described);
}

Outcome<std::vector<dev_t>> SysfsBlockDevices::diskAndPartitions(dev_t disk) const {
    SysfsLook look;
    std::vector<dev_t> numbers;
    if (const auto folder = look.blockDevice(disk)) {
        for (const std::string& member : familyFolders(look, *folder)) {
            if (const auto number = Announcement(look, member).number()) numbers.push_back(*number);
        }
    }
    if (const auto seen = sawAll(look, disk); !seen) return seen.problem();
    // Without the disk itself the list can't be a whole one either.
    if (std::ranges::find(numbers, disk) == numbers.end()) return unknown(disk);
    return numbers;
}

std::vector<std::string> SysfsBlockDevices::builtOnTopOf(dev_t disk) const {
    SysfsLook look;
    std::vector<std::string> names;
    const auto folder = look.blockDevice(disk);
    if (!folder) return names;
    for (const std::string& member : familyFolders(look, *folder)) {
        std::error_code error;
        const std::filesystem::directory_iterator end;
        for (std::filesystem::directory_iterator at(member + "/holders", error); !error && at != end;
             at.increment(error)) {
            names.push_back(nameOfHolder(at->path()));
        }
    }
    return names;
}

}  // namespace kestrav
