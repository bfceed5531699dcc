#include <array>

#include "base/stopProcess.h"
#include "device/DiskNodes.h"
#include "device/KestravDevice.h"
#include "device/imageSize.h"

namespace kestrav {

namespace {

// The accessory's layout, in blocks of 512 bytes from the start of the whole disk.
constexpr std::int64_t firmwareArea = 1536;
constexpr std::int64_t iconArea = 2048;

std::string joined(std::string_view first, std::string_view second) {
    return std::string(first).append(second);
}

}  // namespace

bool KestravDevice::firmwareUpdate(std::string_view path) {
    return update(firmwareArea, path);
}

bool KestravDevice::iconUpdate(std::string_view path) {
    return update(iconArea, path);
}

bool KestravDevice::update(std::int64_t firstBlock, std::string_view path) {
    // The whole file is read although only its size is told: an image that can't be read to its end must not be
    // half-way onto the disk when that turns out.
    const std::optional<std::uint64_t> size = imageSize(path);
    require(size.has_value());
    if (*size == 0) {
        log(joined("Unabled to read file: ", path));
        return false;
    }
    log(joined("Loaded icon file: ", path) + " with " + std::to_string(*size) + " bytes.");
    log("Writing to device memory space.");
    if (!pushDevice(firstBlock, path)) {
        log("Failed writing to device.");
        return false;
    }
    log("Finished writing to device.");
    return true;
}

bool KestravDevice::pushDevice(std::int64_t firstBlock, std::string_view filename) {
    detectOrForget();
    if (!isReady()) return false;
    const DiskNodes nodes(device.bsdName);
    const std::array<std::string, 1> unmounting{nodes.firstPartition};
    runWithCommand("umount", unmounting);
    const std::array<std::string, 4> copying{joined("if=", filename), joined("of=", nodes.rawDisk),
                                             joined("seek=", std::to_string(firstBlock)), "bs=512"};
    runWithCommand("dd", copying);
    // Where the reply to "dd" would stand.
    log("");
    return true;
}

std::string KestravDevice::pullDevice(std::int64_t firstBlock, std::int64_t length) {
    detectOrForget();
    if (!isReady()) return {};
    const std::array<std::string, 3> reading{joined("if=", DiskNodes(device.bsdName).rawDisk),
                                             joined("skip=", std::to_string(firstBlock)),
                                             joined("count=", std::to_string(length))};
    runWithCommand("dd", reading);
    return {};
}

}  // namespace kestrav
