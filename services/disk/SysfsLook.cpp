#include "services/disk/SysfsLook.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"

namespace kestrav {
namespace {

// The kernel gives an attribute as a page at most.
constexpr std::size_t kLongestAttribute = 4096;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

struct FreeText {
    void operator()(char* text) const noexcept { std::free(text); }
};

}  // namespace

/// What isn't there, isn't a link or is just going away is an answer; anything else is none.
void SysfsLook::note(int error) {
    if (error != ENOENT && error != ENOTDIR && error != ENODEV && error != EINVAL) shortage_ = error;
}

std::string SysfsLook::linkTarget(const std::string& path) {
    std::array<char, PATH_MAX> target;  // NOLINT: only what readlink() wrote is looked at
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length >= 0) return {target.data(), static_cast<std::size_t>(length)};
    note(errno);
    return {};
}

std::optional<std::string> SysfsLook::blockDevice(dev_t number) {
    const std::string target = linkTarget("/sys/dev/block/" + shownNumber(number));
    constexpr std::string_view kUp = "../../";
    if (!target.starts_with(kUp)) return std::nullopt;
    const std::string folder = "/sys/" + target.substr(kUp.size());
    const std::unique_ptr<char, FreeText> straight(::realpath(folder.c_str(), nullptr));
    if (!straight) note(errno);
    // As the kernel writes it: no way back up, and no link on the way.
    const bool isPlain = straight && folder == straight.get() && folder.starts_with("/sys/devices/");
    return isPlain ? std::optional(folder) : std::nullopt;
}

std::optional<std::string> SysfsLook::attribute(const std::string& folder, const char* name) {
    const UniqueFd file(::open((folder + '/' + name).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::array<char, kLongestAttribute> text;  // NOLINT: only what read() wrote is looked at
    const ssize_t length = file ? retry([&] { return ::read(file.get(), text.data(), text.size()); }) : -1;
    if (length < 0) {
        note(errno);
        return std::nullopt;
    }
    std::string_view said(text.data(), static_cast<std::size_t>(length));
    while (said.ends_with('\n'))
        said.remove_suffix(1);
    return std::string(said);
}

std::optional<std::uint64_t> SysfsLook::numberAttribute(const std::string& folder, const char* name) {
    const auto text = attribute(folder, name);
    if (!text) return std::nullopt;
    std::uint64_t value = 0;
    const char* last = text->data() + text->size();
    const auto [end, error] = std::from_chars(text->data(), last, value);
    if (error != std::errc() || end != last) return std::nullopt;
    return value;
}

std::string SysfsLook::subsystem(const std::string& folder) {
    const std::string target = linkTarget(folder + "/subsystem");
    return target.substr(target.rfind('/') + 1);
}

std::vector<std::string> SysfsLook::foldersIn(const std::string& folder) {
    std::vector<std::string> names;
    const Folder opened(::opendir(folder.c_str()));
    if (!opened) note(errno);
    while (const dirent* entry = opened ? ::readdir(opened.get()) : nullptr) {
        const bool mayBeOne = entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN;
        if (mayBeOne && entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    }
    return names;
}

std::string SysfsLook::shownNumber(dev_t number) {
    return std::to_string(major(number)) + ":" + std::to_string(minor(number));
}

}  // namespace kestrav
