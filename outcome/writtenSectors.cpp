#include "outcome/writtenSectors.h"

#include <fstream>
#include <string>

namespace kestrav {

std::optional<std::uint64_t> writtenSectors(std::string_view disk, const std::filesystem::path& disks) {
    if (disk.empty() || disk.find('/') != std::string_view::npos || disk.starts_with('.')) return std::nullopt;
    std::ifstream stat(disks / disk / "stat");
    std::uint64_t value = 0;
    for (int field = 0; field < 7; ++field)
        stat >> value;
    return stat ? std::optional(value) : std::nullopt;
}

}  // namespace kestrav
