#include "cli/warningsAbout.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "cli/OrdinaryFile.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

using namespace std::string_view_literals;

// Of nearly every image the first piece tells already.
constexpr std::int64_t kPiece = 1 << 16;

/// What files of other kinds begin with.
constexpr std::array<std::pair<std::string_view, std::string_view>, 13> kOtherKinds{{
    {"PK\x03\x04"sv, "a ZIP archive"},
    {"\x1f\x8b"sv, "a gzip archive"},
    {"BZh"sv, "a bzip2 archive"},
    {"\xfd"
     "7zXZ\0"sv,
     "an xz archive"},
    {"\x28\xb5\x2f\xfd"sv, "a zstd archive"},
    {"7z\xbc\xaf\x27\x1c"sv, "a 7z archive"},
    {"Rar!\x1a\x07"sv, "a RAR archive"},
    {"\x89PNG\r\n\x1a\n"sv, "a PNG picture"},
    {"\xff\xd8\xff"sv, "a JPEG picture"},
    {"GIF8"sv, "a GIF picture"},
    {"<svg"sv, "an SVG picture"},
    {"<?xml"sv, "an XML document"},
    {"%PDF-"sv, "a PDF document"},
}};

std::string_view otherKind(const std::vector<std::byte>& beginning) {
    const std::string_view text(reinterpret_cast<const char*>(beginning.data()), beginning.size());
    const auto found =
        std::ranges::find_if(kOtherKinds, [&](const auto& kind) { return text.starts_with(kind.first); });
    return found == kOtherKinds.end() ? std::string_view() : found->second;
}

/// The byte that is the only one in the file.
std::optional<std::byte> onlyByte(const OrdinaryFile& image) {
    std::optional<std::byte> only;
    for (std::int64_t at = 0; at < image.size(); at += kPiece) {
        const std::vector<std::byte> bytes = image.read(at, kPiece);
        if (bytes.empty()) return std::nullopt;
        if (!only) only = bytes.front();
        if (std::ranges::any_of(bytes, [&](std::byte byte) { return byte != *only; })) return std::nullopt;
    }
    return only;
}

}  // namespace

std::vector<std::string> warningsAbout(const OrdinaryFile& image, const UpdateResult& asked) {
    std::vector<std::string> warnings;
    if (asked.firstBlock == kFirmwareBlock && asked.bytes > kFirmwareAreaBytes) {
        warnings.push_back("The image has " + std::to_string(asked.bytes) +
                           " bytes and runs into the icon area, which begins " + std::to_string(kFirmwareAreaBytes) +
                           " bytes behind the firmware's.");
    }
    const std::string_view kind = otherKind(image.read(0, 16));
    if (!kind.empty()) warnings.push_back("The image begins like " + std::string(kind) + ".");
    const auto only = onlyByte(image);
    if (only == std::byte{0} || only == std::byte{255}) {
        warnings.push_back("The image is empty of content: every byte of it is " +
                           std::to_string(std::to_integer<int>(*only)) + ".");
    }
    return warnings;
}

}  // namespace kestrav
