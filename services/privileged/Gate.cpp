#include "services/privileged/Gate.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <optional>
#include <unistd.h>

#include "services/privileged/AccessoryNode.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/DiskReader.h"
#include "services/privileged/DiskWriter.h"
#include "services/privileged/ImageFile.h"
#include "services/privileged/OpenDisk.h"
#include "services/privileged/RequestLog.h"
#include "services/privileged/Unmounter.h"

namespace kestrav {
namespace {

constexpr std::uint64_t sector = 512;
constexpr std::uint64_t iconBlock = 2048;  // the accessory's layout: its icon begins here, its firmware before

std::string joined(std::string_view command, std::span<const std::string> arguments) {
    std::string line = shown(command, 40);
    for (const std::string& argument : arguments) {
        line += ' ';
        line += shown(argument);
        if (line.size() > 2000) return line + " ...";
    }
    return line;
}

std::optional<Problem> doesNotFit(std::uint64_t imageBytes, std::uint64_t firstBlock, const BlockDevice& disk) {
    const std::uint64_t diskBlocks = disk.bytes / sector;
    if (firstBlock >= diskBlocks) {
        return refused("block " + std::to_string(firstBlock) + " lies past the end of " + disk.name + ", which has " +
                       std::to_string(diskBlocks) + " blocks.");
    }
    const std::uint64_t room = disk.bytes - firstBlock * sector;
    if (imageBytes <= room) return std::nullopt;
    return refused("the image has " + std::to_string(imageBytes) + " bytes, but " + disk.name + " has room for " +
                   std::to_string(room) + " from block " + std::to_string(firstBlock) + " on. Nothing was written.");
}

std::string speed(const WriteReport& report) {
    const double perSecond = static_cast<double>(report.bytes) / 1e6 / std::max(report.seconds, 1e-6);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f MB/s", perSecond);
    return text.data();
}

std::string writeAnswer(const WriteReport& report, std::uint64_t firstBlock, const std::string& diskName) {
    const std::uint64_t lastBlock = firstBlock + (report.bytes - 1) / sector;
    std::string answer = "Wrote " + std::to_string(report.bytes) + " bytes to " + diskName + " at block " +
                         std::to_string(firstBlock) + (report.verified ? ", verified, " : ", not verified, ") +
                         speed(report) + ".";
    if (firstBlock == 0) answer += " This replaced the disk's partition table.";
    if (firstBlock < iconBlock && lastBlock >= iconBlock) {
        answer += " It reaches into the icon area: blocks " + std::to_string(firstBlock) + " to " +
                  std::to_string(lastBlock) + " were written.";
    }
    if (!report.verified) answer += " The system gave no way to read past its own memory.";
    return answer;
}

std::string unmountAnswer(const std::string& name, const std::vector<std::string>& places) {
    if (places.empty()) return name + " was not mounted.";
    std::string answer = "Unmounted " + name + " from ";
    for (const std::string& place : places)
        answer += (&place == &places.front() ? "" : " and ") + shown(place);
    return shown(answer + ".", longestAnswer);
}

}  // namespace

std::string Gate::perform(const Caller& caller, std::string_view command, std::span<const std::string> arguments) {
    const std::string who = "user " + std::to_string(caller.uid) + ": " + joined(command, arguments) + ": ";
    const auto answer = [&]() -> Outcome<std::string> {
        const auto request = parseCommandLine(command, arguments);
        if (!request) return request.problem();
        return carryOut(caller, request.value());
    };
    try {
        const auto outcome = answer();
        const bool blocks = outcome && command == "dd" && arguments.size() == 3;
        std::string text = outcome ? outcome.value() : answerFor(outcome.problem());
        if (!outcome && outcome.problem().kind == Problem::Kind::refused) {
            log_.refused(caller.uid, who + text);
        } else {
            log_.write(who + (blocks ? "read " + std::to_string(text.size()) + " bytes" : text));
        }
        return text;
    } catch (const std::exception& error) {
        // Out of memory or of descriptors in a library: the request ends, the service doesn't.
        std::string text = answerFor(failed(error.what()));
        log_.write(who + text);
        return text;
    }
}

Outcome<std::string> Gate::carryOut(const Caller& caller, const PrivilegedRequest& request) const {
    if (const auto* unmounting = std::get_if<UnmountRequest>(&request)) return unmount(*unmounting);
    if (const auto* writing = std::get_if<WriteRequest>(&request)) return write(*writing, caller);
    return read(std::get<ReadRequest>(request));
}

Outcome<std::string> Gate::unmount(const UnmountRequest& request) const {
    const auto partition = findFirstPartition(devices_, request.node, request.diskName);
    if (!partition) return partition.problem();
    const BlockDevice& device = partition.value().device;
    const auto places = unmountAll(mounts_, {device.number}, device.name);
    if (!places) return places.problem();
    return unmountAnswer(device.name, places.value());
}

Outcome<std::string> Gate::write(const WriteRequest& request, const Caller& caller) const {
    const auto node = findDisk(devices_, request.node, request.diskName);
    if (!node) return node.problem();
    const BlockDevice& device = node.value().device;
    const auto image = ImageFile::open(request.imagePath, caller, patience_);
    if (!image) return image.problem();
    if (auto problem = doesNotFit(image.value().size(), request.firstBlock, device)) return *problem;
    const auto family = devices_.diskAndPartitions(device.number);
    if (!family) return family.problem();
    if (std::ranges::find(family.value(), image.value().fileSystem()) != family.value().end()) {
        return refused("the image lies on the accessory itself; copy it to another disk first.");
    }
    // The desktop may have mounted a partition again since the updater asked to unmount it.
    if (const auto places = unmountAll(mounts_, family.value(), device.name); !places) return places.problem();
    const auto disk = openDisk(devices_, node.value(), DiskUse::write);
    if (!disk) return disk.problem();
    const auto report = writeImage(image.value(), *disk.value(), request.firstBlock * sector, device.name);
    if (!report) return report.problem();
    return writeAnswer(report.value(), request.firstBlock, device.name);
}

Outcome<std::string> Gate::read(const ReadRequest& request) const {
    const auto node = findDisk(devices_, request.node, request.diskName);
    if (!node) return node.problem();
    const auto disk = openDisk(devices_, node.value(), DiskUse::read);
    if (!disk) return disk.problem();
    return readBlocks(*disk.value(), request.firstBlock, request.count, node.value().device.name);
}

}  // namespace kestrav
