#include "services/disk/NodeBytes.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/systemProblem.h"
#include "base/wholeFile.h"
#include "services/disk/emptyDiskCache.h"

namespace kestrav {
namespace {

/// The kernel says "No data available" where the disk reports that its medium is worn out there.
Problem diskProblem(const Problem& problem) {
    if (problem.cause != std::errc::no_message_available) return problem;
    return failed("its memory is damaged there.", problem.cause);
}

}  // namespace

NodeBytes::NodeBytes(UniqueFd node, std::uint64_t size, std::uint32_t blockSize)
    : node_(std::move(node)),
      size_(size),
      blockSize_(blockSize) {
    const int flags = ::fcntl(node_.get(), F_GETFL);
    direct_ = flags >= 0 && (flags & O_DIRECT) != 0;
}

Outcome<void> NodeBytes::read(std::uint64_t offset, std::span<std::byte> into) {
    auto got = readAt(node_.get(), into, offset);
    if (!got && leftDirectMode(got.problem())) got = readAt(node_.get(), into, offset);
    if (!got) return diskProblem(got.problem());
    if (got.value() < into.size()) return systemProblem(EIO);  // a disk that ends before its size has gone away
    return {};
}

Outcome<void> NodeBytes::write(std::uint64_t offset, std::span<const std::byte> bytes) {
    auto written = writeAllAt(node_.get(), bytes, offset);
    if (!written && leftDirectMode(written.problem())) written = writeAllAt(node_.get(), bytes, offset);
    if (!written) return diskProblem(written.problem());
    return {};
}

Outcome<void> NodeBytes::flush() {
    // The system's memory first, without what fsync() does to the disk, and then the disk's own.
    constexpr unsigned kWriteAndWait = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    if (::sync_file_range(node_.get(), 0, 0, kWriteAndWait) != 0) return diskProblem(systemProblem(errno));
    if (auto emptied = emptyDiskCache(node_.get()); !emptied) return emptied;
    // Not repeated after any error, an interruption neither: the kernel reports a lost write once, a second call would
    // find none.
    if (::fsync(node_.get()) != 0) return diskProblem(systemProblem(errno));
    return {};
}

Outcome<DiskBytes::ReadFrom> NodeBytes::readBack(std::uint64_t offset, std::span<std::byte> into) {
    if (direct_) {
        const auto got = read(offset, into);
        if (!got) return got.problem();
        // read() may have had to give direct mode up on the way.
        if (direct_) return ReadFrom::disk;
    }
    // Without RANDOM the kernel would read ahead, and the next piece would look cached.
    ::posix_fadvise(node_.get(), 0, 0, POSIX_FADV_RANDOM);
    ::posix_fadvise(node_.get(), static_cast<off_t>(offset), static_cast<off_t>(into.size()), POSIX_FADV_DONTNEED);
    const auto from = notInCache(offset, into.size()) ? ReadFrom::disk : ReadFrom::memory;
    const auto got = read(offset, into);
    if (!got) return got.problem();
    return from;
}

/// Some nodes let themselves be opened with O_DIRECT and then refuse each access. True when that was it, once.
bool NodeBytes::leftDirectMode(const Problem& problem) {
    if (problem.cause != std::errc::invalid_argument || !direct_) return false;
    direct_ = false;
    const int flags = ::fcntl(node_.get(), F_GETFL);
    return flags >= 0 && ::fcntl(node_.get(), F_SETFL, flags & ~O_DIRECT) == 0;
}

/// mincore(2) tells of each page of the range whether it lies in the system's cache, without reading it.
bool NodeBytes::notInCache(std::uint64_t offset, std::size_t length) const {
    const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const std::uint64_t start = offset / pageSize * pageSize;
    const auto span = static_cast<std::size_t>(offset + length - start);
    void* view = ::mmap(nullptr, span, PROT_READ, MAP_SHARED, node_.get(), static_cast<off_t>(start));
    if (view == MAP_FAILED) return false;
    std::vector<unsigned char> pages((span + pageSize - 1) / pageSize);
    const bool told = ::mincore(view, span, pages.data()) == 0;
    ::munmap(view, span);
    return told && std::none_of(pages.begin(), pages.end(), [](unsigned char page) { return (page & 1U) != 0; });
}

}  // namespace kestrav
