#pragma once

#include <cstdint>
#include <string_view>

/// The accessory as its maker built it: its USB identifiers and the layout of its disk.
namespace kestrav {

/// The USB vendor and product identifier by which the accessory is known.
inline constexpr std::int64_t kAccessoryVendor = 0x10d6;
inline constexpr std::int64_t kAccessoryProduct = 0xfd01;

/// The same two as the kernel writes them in sysfs and udev in its database: four small hexadecimal digits.
inline constexpr const char* kAccessoryVendorDigits = "10d6";
inline constexpr const char* kAccessoryProductDigits = "fd01";

/// Both, as people know them from lsusb(8); for sentences.
#define KESTRAV_ACCESSORY_USB "10d6:fd01"  // NOLINT(cppcoreguidelines-macro-usage): it is put together with literals

/// What blocks are counted in, from the start of the whole disk: bytes.
inline constexpr std::int64_t kBlockBytes = 512;
/// The same as the argument of a command line that writes.
#define KESTRAV_BLOCK_BYTES_ARGUMENT "bs=512"  // NOLINT(cppcoreguidelines-macro-usage): for literals

/// The first block of the area that the firmware, or the icon, is written to. Nothing marks the end of an area.
inline constexpr std::int64_t kFirmwareBlock = 1536;
inline constexpr std::int64_t kIconBlock = 2048;
/// What a firmware may hold before it reaches into the icon's place.
inline constexpr std::int64_t kFirmwareAreaBytes = (kIconBlock - kFirmwareBlock) * kBlockBytes;

}  // namespace kestrav
