// What a disk, which may be anything that was plugged in, answers when it is told to keep what it was given. The bytes
// count as kept only where it says so in one of the ways of the standard.
//
// The input's first byte is the host's status, the second one the disk's, the rest its sense data.

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/stopProcess.h"
#include "services/disk/emptyDiskCache.h"

namespace kestrav {
namespace {

constexpr unsigned kNoKey = 0xFF;

/// SPC-4, 4.5: fixed format (70h, 71h) has the key in byte 2, descriptor format (72h, 73h) in byte 1.
unsigned keyIn(std::span<const unsigned char> sense) {
    if (sense.size() < 3) return kNoKey;
    switch (sense[0] & 0x7FU) {
        case 0x70:
        case 0x71:
            return sense[2] & 0xFU;
        case 0x72:
        case 0x73:
            return sense[1] & 0xFU;
        default:
            return kNoKey;
    }
}

void check(std::uint8_t host, std::uint8_t status, std::span<const unsigned char> sense) {
    const auto kept = keptBytes({host, status, sense});
    const unsigned key = keyIn(sense);
    // No sense, a recovered error, and a command that the disk does not know.
    const bool isFine = key == 0 || key == 1 || key == 5;
    require(static_cast<bool>(kept) == (host == 0 && (status == 0 || (status == 2 && isFine))));
    if (!kept) require(kept.problem().cause && !kept.problem().sentence.empty());
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    kestrav::check(data[0], data[1], std::span(data, size).subspan(2));
    return 0;
}
