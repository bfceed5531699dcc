#include "device/ImageSender.h"

#include <array>
#include <optional>

#include "base/stopProcess.h"
#include "command/CommandService.h"
#include "device/AccessoryFinder.h"
#include "device/LogSink.h"
#include "device/countReadableBytes.h"
#include "protocol/accessory.h"

namespace kestrav {

namespace {

std::string joined(std::string_view first, std::string_view second) {
    return std::string(first).append(second);
}

}  // namespace

ImageSender::ImageSender(AccessoryFinder& finder, CommandService& commands, LogSink& log)
    : finder_(finder),
      commands_(commands),
      log_(log) {}

bool ImageSender::firmwareUpdate(std::string_view path) {
    return update(kFirmwareBlock, path);
}

bool ImageSender::iconUpdate(std::string_view path) {
    return update(kIconBlock, path);
}

bool ImageSender::update(std::int64_t firstBlock, std::string_view path) {
    // The whole file is read although only its size is logged. An image that can't be read to its end must be found out
    // before the service has written the first half of it.
    const std::optional<std::uint64_t> size = countReadableBytes(path);
    // frozen: F7
    require(size.has_value());
    if (*size == 0) {
        // frozen: F1
        log_.log(joined("Unabled to read file: ", path));
        return false;
    }
    // frozen: F2
    log_.log(joined("Loaded icon file: ", path) + " with " + std::to_string(*size) + " bytes.");
    log_.log("Writing to device memory space.");
    // frozen: F6
    if (!pushDevice(firstBlock, path)) {
        log_.log("Failed writing to device.");
        return false;
    }
    log_.log("Finished writing to device.");
    return true;
}

bool ImageSender::pushDevice(std::int64_t firstBlock, std::string_view filename) {
    finder_.detectAccessoryOrForgetIt();
    const std::optional<DiskNodes> nodes = finder_.nodesOrLogNotReady();
    if (!nodes) return false;
    const std::array<std::string, 1> unmounting{nodes->firstPartition};
    commands_.runWithCommand("umount", unmounting);
    const std::array<std::string, 4> copying{joined("if=", filename), joined("of=", nodes->rawDisk),
                                             joined("seek=", std::to_string(firstBlock)), KESTRAV_BLOCK_BYTES_ARGUMENT};
    // frozen: F4
    commands_.runWithCommand("dd", copying);
    // The empty line stands in the place of a reply to "dd", which the log never shows.
    // frozen: F3
    log_.log("");
    return true;
}

std::string ImageSender::pullDevice(std::int64_t firstBlock, std::int64_t length) {
    finder_.detectAccessoryOrForgetIt();
    const std::optional<DiskNodes> nodes = finder_.nodesOrLogNotReady();
    if (!nodes) return {};
    const std::array<std::string, 3> reading{joined("if=", nodes->rawDisk), joined("skip=", std::to_string(firstBlock)),
                                             joined("count=", std::to_string(length))};
    // frozen: F5
    commands_.runWithCommand("dd", reading);
    return {};
}

}  // namespace kestrav
