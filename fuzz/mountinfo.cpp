// Lines of /proc/PID/mountinfo, in which users choose the names. What is understood of one is what it is told again
// when that is written down anew.

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/sysmacros.h>

#include "base/stopProcess.h"
#include "services/disk/MountinfoLine.h"

namespace kestrav {
namespace {

/// As the kernel does it.
std::string escaped(const std::string& place) {
    std::string text;
    for (const char c : place) {
        const auto byte = static_cast<unsigned char>(c);
        if (c != ' ' && c != '\t' && c != '\n' && c != '\\') {
            text += c;
            continue;
        }
        text += '\\';
        for (const unsigned shift : {6U, 3U, 0U})
            text += static_cast<char>('0' + (byte >> shift & 7U));
    }
    return text;
}

std::string written(const MountinfoLine& mount) {
    std::string line = std::to_string(mount.id) + ' ' + std::to_string(mount.parent) + ' ' +
                       std::to_string(major(mount.device)) + ':' + std::to_string(minor(mount.device)) + " / " +
                       escaped(mount.place) + " rw";
    for (const std::uint64_t group : mount.groups)
        line += " master:" + std::to_string(group);
    return line + " - ext4 /dev/sdb1 rw";
}

void check(std::string_view line) {
    require(MountinfoLine::unescaped(line).size() <= line.size());
    require(MountinfoLine::unescaped(escaped(std::string(line))) == line);
    const auto mount = MountinfoLine::parse(line);
    if (!mount) return;
    require(mount->place.starts_with('/'));
    const auto again = MountinfoLine::parse(written(*mount));
    require(again && again->id == mount->id && again->parent == mount->parent && again->device == mount->device);
    require(again->place == mount->place && again->groups == mount->groups);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrav::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
