#include "services/gate/Gate.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>
#include <variant>

#include "base/shownText.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"
#include "services/asker/Asker.h"
#include "services/asker/Intent.h"
#include "services/asker/obtainConsent.h"
#include "services/disk/AccessoryNode.h"
#include "services/disk/openDisk.h"
#include "services/disk/unmountAll.h"
#include "services/gate/BoardNote.h"
#include "services/gate/RequestLog.h"
#include "services/gate/answerFor.h"
#include "services/gate/readBlocks.h"
#include "services/gate/shownCommandLine.h"
#include "services/gate/writeImage.h"
#include "services/image/CompleteImage.h"
#include "services/image/ImageFile.h"

namespace kestrav {
namespace {

constexpr std::uint64_t kBlock = kBlockBytes;
constexpr std::uint64_t kIcon = kIconBlock;

Problem holdsNothing(const std::string& diskName) {
    return refused("the accessory shows no memory behind " + diskName +
                   ", as after it was ejected; unplug it, plug it in again and try again.");
}

Outcome<void> fits(std::uint64_t imageBytes, std::uint64_t firstBlock, const BlockDevice& disk) {
    const std::uint64_t diskBlocks = disk.bytes / kBlock;
    if (diskBlocks == 0) return holdsNothing(disk.name);
    if (firstBlock >= diskBlocks) {
        return refused("block " + std::to_string(firstBlock) + " lies past the end of " + disk.name + ", which has " +
                       std::to_string(diskBlocks) + " blocks.");
    }
    const std::uint64_t room = disk.bytes - firstBlock * kBlock;
    if (imageBytes <= room) return {};
    return refused("the image has " + std::to_string(imageBytes) + " bytes, but " + disk.name + " has room for " +
                   std::to_string(room) + " from block " + std::to_string(firstBlock) + " on. Nothing was written.");
}

/// Millions of bytes a second.
std::string speed(const WriteReport& report) {
    const double perSecond = static_cast<double>(report.bytes) / 1e6 / std::max(report.seconds, 1e-6);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f", perSecond);
    return text.data();
}

std::string writeAnswer(const WriteReport& report, std::uint64_t firstBlock, const std::string& diskName) {
    const std::uint64_t lastBlock = firstBlock + (report.bytes - 1) / kBlock;
    std::string answer(kWrotePrefix);
    answer.append(std::to_string(report.bytes)).append(kBytesToPart).append(diskName);
    answer.append(kAtBlockPart).append(std::to_string(firstBlock));
    answer.append(report.verified ? kVerifiedPart : kNotVerifiedPart).append(speed(report)).append(kSpeedEnd);
    if (firstBlock == 0) answer += " This replaced the disk's partition table.";
    // frozen: F6
    if (firstBlock < kIcon && lastBlock >= kIcon) {
        answer += " It reaches into the icon area: blocks " + std::to_string(firstBlock) + " to " +
                  std::to_string(lastBlock) + " were written.";
    }
    if (!report.verified) answer += " The system gave no way to read past its own memory.";
    return answer;
}

std::string listed(const std::vector<std::string>& places) {
    std::string list;
    for (const std::string& place : places)
        list += (list.empty() ? "" : " and ") + shownText(place);
    return list;
}

std::string unmountAnswer(const std::string& name, const std::vector<std::string>& places) {
    if (places.empty()) return name + std::string(kNotMountedEnd);
    return shownSentence(std::string(kUnmountedPrefix) + name + std::string(kFromPart) + listed(places) + ".",
                         kLongestAnswer);
}

/// `outcome` with what the write itself took away, which somebody else has mounted since it was asked to be unmounted.
Outcome<std::string> withUnmounted(Outcome<std::string> outcome, const std::vector<std::string>& places) {
    if (places.empty()) return outcome;
    const std::string also = " It was mounted again and was unmounted from " + listed(places) + ".";
    if (outcome) return shownSentence(outcome.value() + also, kLongestAnswer);
    Problem problem = outcome.problem();
    problem.sentence += also;
    return problem;
}

WriteVerdict verdictOn(const Outcome<std::string>& outcome) {
    if (outcome) return WriteVerdict::wrote;
    return outcome.problem().kind == Problem::Kind::refused ? WriteVerdict::refused : WriteVerdict::failed;
}

/// The asker's process; 0 where it is not known.
pid_t processIn(const Outcome<ConsentSubject>& subject) {
    if (!subject) return 0;
    if (const auto* process = std::get_if<AskingProcess>(&subject.value())) return process->pid;
    return std::get<AskingBusName>(subject.value()).process;
}

/// What the request comes to for a person.
Intent intentOf(const PrivilegedRequest& request, const std::optional<ImageFile>& image) {
    if (const auto* unmounting = std::get_if<UnmountRequest>(&request)) return {.disk = unmounting->diskName};
    if (const auto* reading = std::get_if<ReadRequest>(&request))
        return {.disk = reading->diskName, .firstBlock = std::to_string(reading->firstBlock)};
    const auto& writing = std::get<WriteRequest>(request);
    return {.file = writing.imagePath,
            .bytes = image ? std::to_string(image->size()) : std::string(),
            .disk = writing.diskName,
            .firstBlock = std::to_string(writing.firstBlock)};
}

}  // namespace

Outcome<void> Gate::admit(uid_t uid) const {
    return mayAsk(consent_, uid);
}

GateAnswer Gate::perform(Asker& asker, std::string_view command, std::span<const std::string> arguments) {
    const std::string asked = shownCommandLine({}, command, arguments);
    const auto denied = [&asked](const Problem& problem) {
        return GateAnswer{GateAnswer::Kind::denied, answerFor(problem), asked};
    };
    const auto rights = rightsOf(asker.uid());
    if (!rights) return denied(rights.problem());
    auto request = parsePrivilegedRequest(command, arguments);
    // Opened before anybody is asked about it: what is written is what was agreed to, of the size that was named.
    std::optional<ImageFile> image;
    if (request && needsConsent(asker.uid())) {
        auto opened = imageOf(request.value(), rights.value());
        // Nobody is asked to agree to an image that can't be opened.
        opened ? void(image = std::move(opened.value())) : void(request = opened.problem());
    }
    BoardNote note;
    if (request) {
        const auto subject = whoAsks(consent_, asker);
        note = noteFor(asker.uid(), subject, request.value());
        if (needsConsent(asker.uid())) note.ask();
        // Later on the board may be the next request's.
        asker.whenAnswered([&] {
            note.end(WriteVerdict::refused);
            image.reset();
        });
        if (const auto consent = obtainConsent(consent_, asker, subject, intentOf(request.value(), image)); !consent) {
            note.end(WriteVerdict::refused);
            return denied(consent.problem());
        }
    }
    if (!asker.mayBegin()) {
        note.end(WriteVerdict::refused);
        return {GateAnswer::Kind::notBegun, {}};
    }
    const std::string who = "user " + std::to_string(asker.uid()) + ": " + asked + ": ";
    return {GateAnswer::Kind::answered, answer(rights.value(), request, image, who, note)};
}

Outcome<std::optional<ImageFile>> Gate::imageOf(const PrivilegedRequest& request, const UserRights& rights) const {
    const auto* writing = std::get_if<WriteRequest>(&request);
    if (writing == nullptr) return std::optional<ImageFile>();
    auto image = ImageFile::open(writing->imagePath, rights, patience_);
    if (!image) return image.problem();
    return std::optional<ImageFile>(std::move(image.value()));
}

/// Only for a disk that is there and the accessory's: nobody fills the board with names of his own.
BoardNote Gate::noteFor(uid_t uid, const Outcome<ConsentSubject>& subject, const PrivilegedRequest& request) const {
    const auto* writing = std::get_if<WriteRequest>(&request);
    if (writing == nullptr || board_.empty()) return {};
    if (!findDisk(devices_, writing->node, writing->diskName)) return {};
    return {board_, {writing->diskName, uid, processIn(subject), writing->firstBlock}};
}

std::string Gate::answer(const UserRights& rights, const Outcome<PrivilegedRequest>& request,
                         std::optional<ImageFile>& image, const std::string& who, BoardNote& note) {
    try {
        const auto outcome =
            request ? carryOut(rights, request.value(), image, note) : Outcome<std::string>(request.problem());
        const bool blocks = outcome && std::holds_alternative<ReadRequest>(request.value());
        note.end(verdictOn(outcome));
        std::string text = outcome ? outcome.value() : answerFor(outcome.problem());
        if (!outcome && outcome.problem().kind == Problem::Kind::refused) {
            log_.refused(rights.uid, who + text);
        } else {
            log_.write(who + (blocks ? "read " + std::to_string(text.size()) + " bytes" : text));
        }
        return text;
    } catch (const std::exception& error) {
        // Out of memory or of descriptors in a library: the request ends, the service doesn't.
        note.end(WriteVerdict::failed);
        std::string text = answerFor(failed(error.what()));
        log_.write(who + text);
        return text;
    }
}

Outcome<std::string> Gate::carryOut(const UserRights& rights, const PrivilegedRequest& request,
                                    std::optional<ImageFile>& image, BoardNote& note) const {
    if (const auto* unmounting = std::get_if<UnmountRequest>(&request)) return unmount(*unmounting);
    if (const auto* writing = std::get_if<WriteRequest>(&request)) return write(*writing, rights, image, note);
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

Outcome<std::string> Gate::write(const WriteRequest& request, const UserRights& rights,
                                 std::optional<ImageFile>& agreedTo, BoardNote& note) const {
    note.begin();
    const auto node = findDisk(devices_, request.node, request.diskName);
    if (!node) return node.problem();
    const BlockDevice& device = node.value().device;
    auto file =
        agreedTo ? Outcome<ImageFile>(std::move(*agreedTo)) : ImageFile::open(request.imagePath, rights, patience_);
    if (!file) return file.problem();
    if (const auto room = fits(file.value().size(), request.firstBlock, device); !room) return room.problem();
    const auto family = devices_.diskAndPartitions(device.number);
    if (!family) return family.problem();
    if (std::ranges::find(family.value(), file.value().fileSystem()) != family.value().end()) {
        return refused("the image lies on the accessory itself; copy it to another disk first.");
    }
    note.measure(file.value().size());
    note.enter(WritePhase::reading, file.value().size());
    const auto image = CompleteImage::read(std::move(file.value()), places_.take(),
                                           [&note](std::uint64_t bytes) { note.advance(bytes); });
    if (!image) return image.problem();
    // The desktop may have mounted a partition again since the updater asked to unmount it.
    note.enter(WritePhase::unmounting, 0);
    const auto places = unmountAll(mounts_, family.value(), device.name);
    if (!places) return places.problem();
    return withUnmounted(writeTo(node.value(), request.firstBlock, image.value(), note), places.value());
}

Outcome<std::string> Gate::writeTo(const AccessoryNode& node, std::uint64_t firstBlock, const ImageBytes& image,
                                   BoardNote& note) const {
    const std::string& name = node.device.name;
    const auto disk = openDisk(devices_, node, DiskUse::write);
    if (!disk) return disk.problem();
    const auto report = writeImage(image, *disk.value(), firstBlock * kBlock, name, note);
    if (!report) return report.problem();
    return writeAnswer(report.value(), firstBlock, name);
}

Outcome<std::string> Gate::read(const ReadRequest& request) const {
    const auto node = findDisk(devices_, request.node, request.diskName);
    if (!node) return node.problem();
    if (node.value().device.bytes < kBlock) return holdsNothing(node.value().device.name);
    const auto disk = openDisk(devices_, node.value(), DiskUse::read);
    if (!disk) return disk.problem();
    return readBlocks(*disk.value(), request.firstBlock, request.count, node.value().device.name);
}

}  // namespace kestrav
