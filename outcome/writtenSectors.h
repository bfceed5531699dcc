#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace kestrav {

/// How many sectors of 512 bytes the kernel has written to the disk since it appeared, by /sys/block/DISK/stat. For
/// progress where no board tells it.
std::optional<std::uint64_t> writtenSectors(std::string_view disk, const std::filesystem::path& disks = "/sys/block");

}  // namespace kestrav
