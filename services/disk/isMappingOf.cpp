#include "services/disk/isMappingOf.h"

#include <algorithm>
#include <charconv>
#include <sys/sysmacros.h>

namespace kestrav {

bool isMappingOf(std::string_view line, const std::vector<dev_t>& devices) {
    for (int word = 0; word < 3; ++word) {
        const std::size_t blank = line.find(' ');
        if (blank == std::string_view::npos) return false;
        line.remove_prefix(blank + 1);
    }
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    const char* end = line.data() + line.size();
    const auto [colon, error] = std::from_chars(line.data(), end, majorNumber, 16);
    if (error != std::errc() || colon == end || *colon != ':') return false;
    if (std::from_chars(colon + 1, end, minorNumber, 16).ec != std::errc()) return false;
    return std::ranges::find(devices, makedev(majorNumber, minorNumber)) != devices.end();
}

}  // namespace kestrav
