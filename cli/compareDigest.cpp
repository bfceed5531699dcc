#include "cli/compareDigest.h"

#include <algorithm>
#include <cctype>

#include "base/systemWords.h"
#include "base/wholeFile.h"
#include "cli/OrdinaryFile.h"
#include "cli/Sha256.h"

namespace kestrav {
namespace {

constexpr std::int64_t kPiece = 1 << 20;
constexpr std::size_t kDigits = 64;
constexpr std::size_t kLongestFile = 100000;

std::string lowered(std::string digits) {
    std::ranges::transform(digits, digits.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return digits;
}

std::string digestOf(const OrdinaryFile& image) {
    Sha256 digest;
    for (std::int64_t at = 0; at < image.size(); at += kPiece)
        digest.take(image.read(at, kPiece));
    return digest.digits();
}

/// The first word of the file, which is how sha256sum(1) writes it.
Outcome<std::string> digestBeside(const OrdinaryFile& image) {
    const std::string path = image.path() + ".sha256";
    const auto text = readWholeFile(path, kLongestFile);
    if (!text)
        return refused(path + " can't be read: " + systemWords(text.problem().cause.value()) +
                       ". Make it with sha256sum.");
    const std::string digest = text.value().substr(0, text.value().find_first_of(" \t\r\n"));
    if (!isDigest(digest)) return refused(path + " does not begin with a SHA-256. Make it with sha256sum.");
    return digest;
}

}  // namespace

bool isDigest(const std::string& text) {
    return text.size() == kDigits && std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

Outcome<void> compareDigest(const OrdinaryFile& image, const SendOptions& options) {
    if (!options.sha256 && !options.check) return {};
    const std::string found = digestOf(image);
    const auto differs = [&](const std::string& expected) {
        return failed("The image is not the one that is expected: its SHA-256 is " + found + ", not " +
                      lowered(expected) + ".");
    };
    if (options.sha256 && lowered(*options.sha256) != found) return differs(*options.sha256);
    if (!options.check) return {};
    const auto beside = digestBeside(image);
    if (!beside) return beside.problem();
    if (lowered(beside.value()) != found) return differs(beside.value());
    return {};
}

}  // namespace kestrav
