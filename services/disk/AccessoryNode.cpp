#include "services/disk/AccessoryNode.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <sys/stat.h>

#include "base/shownText.h"
#include "base/systemWords.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

struct FreeText {
    void operator()(char* text) const noexcept { std::free(text); }
};

/// The node that the alias leads to: directly in /dev, where only root makes entries.
Outcome<std::string> resolve(const std::string& alias) {
    const std::unique_ptr<char, FreeText> path(::realpath(alias.c_str(), nullptr));
    if (!path && errno == ENOENT) {
        return refused("there is no " + shownText(alias) +
                       "; is the accessory plugged in, and its udev rule installed?");
    }
    if (!path) return refused(shownText(alias) + " can't be resolved: " + systemWords(errno) + ".");
    const std::string_view node(path.get());
    constexpr std::string_view kFolder = "/dev/";
    const bool direct = node.starts_with(kFolder) && node.find('/', kFolder.size()) == std::string_view::npos;
    if (!direct) return refused(shownText(alias) + " leads to " + shownText(node) + ", outside of /dev.");
    return std::string(node);
}

Outcome<AccessoryNode> findAccessory(const BlockDevices& devices, const std::string& alias,
                                     const std::string& diskName) {
    auto path = resolve(alias);
    if (!path) return path.problem();
    struct stat status {};
    if (::stat(path.value().c_str(), &status) != 0) {
        return refused(shownText(path.value()) + " can't be examined: " + systemWords(errno) + ".");
    }
    if (!S_ISBLK(status.st_mode)) return refused(shownText(path.value()) + " is not a disk.");
    auto device = devices.find(status.st_rdev);
    if (!device) return refused(shownText(path.value()) + ": " + device.problem().sentence);
    if (!device.value().accessory) {
        return refused(shownText(path.value()) + " is not on the accessory (USB " KESTRAV_ACCESSORY_USB
                                                 "); nothing else is touched.");
    }
    if (device.value().diskName != diskName) {
        return refused(shownText(alias) + " leads to the disk " + shownText(device.value().diskName) + ".");
    }
    return AccessoryNode{std::move(path.value()), std::move(device.value())};
}

}  // namespace

Outcome<AccessoryNode> findDisk(const BlockDevices& devices, const std::string& alias, const std::string& diskName) {
    auto node = findAccessory(devices, alias, diskName);
    if (node && node.value().device.kind != BlockDevice::Kind::disk) {
        return refused(shownText(node.value().path) + " is a partition, not a whole disk.");
    }
    return node;
}

Outcome<AccessoryNode> findFirstPartition(const BlockDevices& devices, const std::string& alias,
                                          const std::string& diskName) {
    auto node = findAccessory(devices, alias, diskName);
    if (node && node.value().device.partitionNumber != 1) {
        return refused(shownText(node.value().path) + " is not the accessory's first partition.");
    }
    return node;
}

}  // namespace kestrav
