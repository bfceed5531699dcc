#include "services/gate/readBlocks.h"

#include <algorithm>

#include "protocol/accessory.h"
#include "services/disk/AlignedBuffer.h"
#include "services/gate/answerFor.h"

namespace kestrav {
namespace {

constexpr std::uint64_t kBlock = kBlockBytes;
constexpr std::uint64_t kLargestBlock = 65536;

static_assert(kMostBlocksRead * kBlock <= kLongestAnswer);

}  // namespace

Outcome<std::string> readBlocks(DiskBytes& disk, std::uint64_t firstBlock, std::uint64_t count,
                                const std::string& diskName) {
    if (count == 0) return refused("count=0 asks for nothing.");
    if (count > kMostBlocksRead) {
        return refused("a reply has room for " + std::to_string(kMostBlocksRead) + " blocks, not for " +
                       std::to_string(count) + ".");
    }
    const std::uint64_t blocks = disk.size() / kBlock;
    if (firstBlock >= blocks || count > blocks - firstBlock) {
        return refused(diskName + " has " + std::to_string(blocks) + " blocks, which end before block " +
                       std::to_string(firstBlock) + " + " + std::to_string(count) + ".");
    }
    const std::uint64_t from = firstBlock * kBlock;
    const std::uint64_t to = from + count * kBlock;
    const std::uint64_t start = from / disk.blockSize() * disk.blockSize();
    const std::uint64_t end = std::min(disk.size(), (to + disk.blockSize() - 1) / disk.blockSize() * disk.blockSize());
    AlignedBuffer buffer(kMostBlocksRead * kBlock + 2 * kLargestBlock + DiskBytes::kBufferAlignment -
                         (kMostBlocksRead * kBlock) % DiskBytes::kBufferAlignment);
    const auto bytes = buffer.first(static_cast<std::size_t>(end - start));
    const auto got = disk.readBack(start, bytes);
    if (!got) return failed("reading " + diskName + ": " + got.problem().sentence);
    const auto wanted = bytes.subspan(static_cast<std::size_t>(from - start), static_cast<std::size_t>(to - from));
    return std::string(reinterpret_cast<const char*>(wanted.data()), wanted.size());
}

}  // namespace kestrav
