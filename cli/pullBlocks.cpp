#include "cli/pullBlocks.h"

#include <optional>
#include <ostream>
#include <string>
#include <unistd.h>
#include <utility>

#include "cli/OutputFile.h"
#include "cli/fetchBlocks.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

UpdateResult notEvenAsked(const std::string& sentence) {
    return UpdateResult().endedWith(ExitCode::wrongCall, sentence);
}

BlockSink standardOutput(const Console& console) {
    return [&out = console.out](std::span<const std::byte> bytes) -> Outcome<void> {
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return {};
    };
}

UpdateResult toFile(const std::string& path, std::int64_t block, std::int64_t bytes, const CommandParts& parts) {
    auto file = OutputFile::open(path);
    if (!file) return notEvenAsked(file.problem().sentence);
    const auto sink = [&file](std::span<const std::byte> piece) { return file.value().write(piece); };
    UpdateResult end = fetchBlocks(block, bytes, parts, sink);
    if (end.status != ExitCode::success) return end;
    if (const auto finished = file.value().finish(); !finished) {
        return end.endedWith(ExitCode::wrongCall, finished.problem().sentence);
    }
    return end.endedWith(ExitCode::success, "Saved " + std::to_string(bytes) + " bytes of " + end.disk +
                                                " from block " + std::to_string(block) + " on in " + path + ".");
}

}  // namespace

UpdateResult pullBlocks(const PullInvocation& pull, const CommandParts& parts) {
    if (pull.count == 0) return notEvenAsked("COUNT is 0. Give the number of blocks to read.");
    if (pull.count > INT64_MAX / kBlockBytes || pull.firstBlock > INT64_MAX - pull.count) {
        return notEvenAsked("No disk has that many blocks. Give a smaller COUNT or BLOCK.");
    }
    const std::int64_t bytes = pull.count * kBlockBytes;
    if (!isStandardOutput(pull.output)) return toFile(*pull.output, pull.firstBlock, bytes, parts);
    if (!pull.output && ::isatty(STDOUT_FILENO) == 1) {
        return notEvenAsked("The bytes would upset the terminal. Name a file with -o, or redirect the output.");
    }
    return fetchBlocks(pull.firstBlock, bytes, parts, standardOutput(parts.console));
}

UpdateResult pullBlocks(const SaveInvocation& save, const CommandParts& parts) {
    const bool isFirmware = save.kind == ImageKind::firmware;
    const std::int64_t bytes = save.bytes.value_or(isFirmware ? kFirmwareAreaBytes : 0);
    if (bytes == 0) return notEvenAsked("Nothing marks the end of an icon. Say with --bytes how long it is.");
    return toFile(save.file, isFirmware ? kFirmwareBlock : kIconBlock, bytes, parts);
}

}  // namespace kestrav
