#include "services/gate/PrivilegedRequest.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <limits>
#include <optional>

#include "base/shownText.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

// The kernel cuts a disk's name at 32 bytes (DISK_NAME_LEN).
constexpr std::size_t kLongestDiskName = 32;

bool isDiskName(std::string_view name) {
    const auto plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    };
    return !name.empty() && name.size() <= kLongestDiskName && std::all_of(name.begin(), name.end(), plain);
}

/// What stands between `prefix` and `suffix`, nothing when they are not there.
std::optional<std::string> between(std::string_view text, std::string_view prefix, std::string_view suffix) {
    if (text.size() < prefix.size() + suffix.size()) return std::nullopt;
    if (!text.starts_with(prefix) || !text.ends_with(suffix)) return std::nullopt;
    text.remove_prefix(prefix.size());
    text.remove_suffix(suffix.size());
    return std::string(text);
}

std::optional<std::string> diskNameIn(std::string_view text, std::string_view prefix, std::string_view suffix) {
    auto name = between(text, prefix, suffix);
    if (name && !isDiskName(*name)) name.reset();
    return name;
}

Outcome<std::uint64_t> numberIn(std::string_view argument, std::string_view key) {
    const auto digits = between(argument, key, "");
    if (!digits) return refused("expected " + std::string(key) + "NUMBER instead of \"" + shownText(argument) + "\".");
    const std::string said = std::string(key) + shownText(*digits, 60);
    if (digits->starts_with('-')) return refused(said + " is negative; blocks are counted from 0.");
    const bool decimal =
        !digits->empty() && std::all_of(digits->begin(), digits->end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!decimal || (digits->size() > 1 && digits->front() == '0')) return refused(said + " is not a decimal number.");
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits->data(), digits->data() + digits->size(), value);
    if (error != std::errc() || value > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        return refused(said + " is larger than any block number.");
    }
    return value;
}

Outcome<std::string> imagePathIn(const std::string& argument) {
    auto path = between(argument, "if=", "");
    if (!path) return refused("expected if=FILE instead of \"" + shownText(argument) + "\".");
    if (path->find('\0') != std::string::npos) return refused("the image's path holds a zero byte.");
    if (path->size() >= PATH_MAX) return refused("the image's path is longer than a path can be.");
    if (!path->starts_with('/')) return refused("the image's path \"" + shownText(*path) + "\" does not begin with /.");
    return std::move(*path);
}

Outcome<PrivilegedRequest> parseUnmount(std::span<const std::string> arguments) {
    if (arguments.size() != 1) return refused("umount takes one argument, the accessory's first partition.");
    auto name = diskNameIn(arguments[0], "/dev/", "s1");
    if (!name) return refused("\"" + shownText(arguments[0]) + "\" does not name a first partition as /dev/DISKs1.");
    return PrivilegedRequest(UnmountRequest{std::move(*name), arguments[0]});
}

Outcome<PrivilegedRequest> parseWrite(std::span<const std::string> arguments) {
    auto path = imagePathIn(arguments[0]);
    if (!path) return path.problem();
    auto name = diskNameIn(arguments[1], "of=/dev/r", "");
    if (!name) return refused("\"" + shownText(arguments[1]) + "\" does not name a whole disk as of=/dev/rDISK.");
    const auto first = numberIn(arguments[2], "seek=");
    if (!first) return first.problem();
    if (arguments[3] != std::string_view(KESTRAV_BLOCK_BYTES_ARGUMENT))
        return refused("expected " KESTRAV_BLOCK_BYTES_ARGUMENT " instead of \"" + shownText(arguments[3]) + "\".");
    std::string node = "/dev/r" + *name;
    return PrivilegedRequest(WriteRequest{std::move(path.value()), std::move(*name), std::move(node), first.value()});
}

Outcome<PrivilegedRequest> parseRead(std::span<const std::string> arguments) {
    auto name = diskNameIn(arguments[0], "if=/dev/r", "");
    if (!name) return refused("\"" + shownText(arguments[0]) + "\" does not name a whole disk as if=/dev/rDISK.");
    const auto first = numberIn(arguments[1], "skip=");
    if (!first) return first.problem();
    const auto count = numberIn(arguments[2], "count=");
    if (!count) return count.problem();
    std::string node = "/dev/r" + *name;
    return PrivilegedRequest(ReadRequest{std::move(*name), std::move(node), first.value(), count.value()});
}

}  // namespace

Outcome<PrivilegedRequest> parsePrivilegedRequest(std::string_view command, std::span<const std::string> arguments) {
    if (command == "umount") return parseUnmount(arguments);
    if (command != "dd") return refused("\"" + shownText(command) + "\" is not a command of this service.");
    if (arguments.size() == 4) return parseWrite(arguments);
    if (arguments.size() == 3) return parseRead(arguments);
    return refused("dd takes if= of= seek= " KESTRAV_BLOCK_BYTES_ARGUMENT
                   " to write, or if= skip= count= to read, in this order.");
}

}  // namespace kestrav
