#include "cli/backUp.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "cli/ChosenDevices.h"
#include "cli/OutputFile.h"
#include "cli/fetchBlocks.h"
#include "device/KestravDevice.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

// A serial number is whatever the accessory says; a file's name is not.
std::string fitForAName(std::string text) {
    const auto isFit = [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
               (character >= 'A' && character <= 'Z') || character == '-';
    };
    std::replace_if(
        text.begin(), text.end(), [&](char character) { return !isFit(character); }, '_');
    return text.substr(0, 64);
}

std::string nowInUTC() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

// A name in `folder` that nothing has yet.
fs::path freeName(const fs::path& folder, std::int64_t block, const UsbDevice& device) {
    const bool isFirmware = block == kFirmwareBlock;
    const std::string area = isFirmware ? "firmware" : block == kIconBlock ? "icon" : "block" + std::to_string(block);
    const std::string ending = isFirmware ? ".fds" : block == kIconBlock ? ".fif" : ".bin";
    const std::string whose = device.serial.empty() ? "port" + device.port : device.serial;
    const std::string name = area + "-" + fitForAName(whose) + "-" + nowInUTC();
    const auto named = [&](const std::string& addition) {
        std::string file = name;
        return folder / file.append(addition).append(ending);
    };
    fs::path path = named("");
    for (int number = 2; fs::symlink_status(path).type() != fs::file_type::not_found; ++number)
        path = named("-" + std::to_string(number));
    return path;
}

Backup notBegun(const UpdateResult& asked, ExitCode code, const std::string& why) {
    return {.path = {},
            .end = asked.endedWith(code, "Nothing was written, for what stands there can't be kept: " + why)};
}

}  // namespace

UpdateResult Backup::addedTo(UpdateResult result) const {
    if (!path.empty()) result.sentence += " What stood there is kept in " + path + ".";
    return result;
}

Backup backUp(const std::optional<std::string>& folder, const UpdateResult& asked, const CommandParts& parts) {
    if (!folder) return {};
    KestravDevice& device = parts.device;
    device.detect(device.vendorID(), device.productID());
    // Without an accessory there is nothing to keep, and the update says why.
    if (!parts.chosen.taken() || !parts.chosen.taken()->disk) return {};
    std::error_code error;
    if (!fs::is_directory(*folder, error)) {
        return notBegun(asked, ExitCode::wrongCall, *folder + " is no folder. Make it, or name another one.");
    }
    const bool isFirmware = asked.firstBlock == kFirmwareBlock;
    const std::int64_t bytes = isFirmware ? std::max(asked.bytes, kFirmwareAreaBytes) : asked.bytes;
    const std::string path = freeName(*folder, asked.firstBlock, *parts.chosen.taken());
    auto file = OutputFile::open(path);
    if (!file) return notBegun(asked, ExitCode::wrongCall, file.problem().sentence);
    const auto sink = [&file](std::span<const std::byte> piece) { return file.value().write(piece); };
    const UpdateResult fetched = fetchBlocks(asked.firstBlock, bytes, parts, sink);
    if (fetched.status != ExitCode::success) return notBegun(fetched, fetched.status, fetched.lastLine());
    if (const auto kept = file.value().finish(); !kept) {
        return notBegun(asked, ExitCode::wrongCall, kept.problem().sentence);
    }
    return {.path = path};
}

}  // namespace kestrav
