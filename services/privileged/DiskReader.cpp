#include "services/privileged/DiskReader.h"

#include <algorithm>

#include "services/privileged/AlignedBuffer.h"
#include "services/privileged/AnswerText.h"

namespace kestrav {
namespace {

constexpr std::uint64_t sector = 512;
constexpr std::uint64_t largestBlock = 65536;

static_assert(mostBlocksRead * sector <= longestAnswer);

}  // namespace

Outcome<std::string> readBlocks(DiskBytes& disk, std::uint64_t firstBlock, std::uint64_t count,
                                const std::string& diskName) {
    if (count == 0) return refused("count=0 asks for nothing.");
    if (count > mostBlocksRead) {
        return refused("a reply has room for " + std::to_string(mostBlocksRead) + " blocks, not for " +
                       std::to_string(count) + ".");
    }
    const std::uint64_t blocks = disk.size() / sector;
    if (firstBlock >= blocks || count > blocks - firstBlock) {
        return refused(diskName + " has " + std::to_string(blocks) + " blocks, which end before block " +
                       std::to_string(firstBlock) + " + " + std::to_string(count) + ".");
    }
    const std::uint64_t from = firstBlock * sector;
    const std::uint64_t to = from + count * sector;
    const std::uint64_t start = from / disk.blockSize() * disk.blockSize();
    const std::uint64_t end = std::min(disk.size(), (to + disk.blockSize() - 1) / disk.blockSize() * disk.blockSize());
    AlignedBuffer buffer(mostBlocksRead * sector + 2 * largestBlock + DiskBytes::bufferAlignment -
                         (mostBlocksRead * sector) % DiskBytes::bufferAlignment);
    const auto bytes = buffer.first(static_cast<std::size_t>(end - start));
    const auto [error, fromDisk] = disk.readBack(start, bytes);
    if (error) return failed("reading " + diskName + ": " + systemWords(error.value()) + ".");
    const auto wanted = bytes.subspan(static_cast<std::size_t>(from - start), static_cast<std::size_t>(to - from));
    return std::string(reinterpret_cast<const char*>(wanted.data()), wanted.size());
}

}  // namespace kestrav
