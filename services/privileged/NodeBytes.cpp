#include "services/privileged/NodeBytes.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "services/privileged/DiskCache.h"

namespace kestrav {
namespace {

std::error_code systemError(int number) {
    return {number, std::generic_category()};
}

}  // namespace

NodeBytes::NodeBytes(UniqueFd node, std::uint64_t size, std::uint32_t blockSize)
    : node_(std::move(node)),
      size_(size),
      blockSize_(blockSize) {
    const int flags = ::fcntl(node_.get(), F_GETFL);
    direct_ = flags >= 0 && (flags & O_DIRECT) != 0;
}

std::error_code NodeBytes::read(std::uint64_t offset, std::span<std::byte> into) {
    while (!into.empty()) {
        const ssize_t got = ::pread(node_.get(), into.data(), into.size(), static_cast<off_t>(offset));
        if (got < 0 && (errno == EINTR || leftDirectMode(errno))) continue;
        if (got < 0) return systemError(errno);
        if (got == 0) return systemError(EIO);  // a disk that ends before its size has gone away
        into = into.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
    return {};
}

std::error_code NodeBytes::write(std::uint64_t offset, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::pwrite(node_.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (sent < 0 && (errno == EINTR || leftDirectMode(errno))) continue;
        if (sent < 0) return systemError(errno);
        if (sent == 0) return systemError(EIO);
        bytes = bytes.subspan(static_cast<std::size_t>(sent));
        offset += static_cast<std::uint64_t>(sent);
    }
    return {};
}

std::error_code NodeBytes::flush() {
    // The system's memory first, without what fsync() does to the disk, and then the disk's own.
    constexpr unsigned writeAndWait = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    if (::sync_file_range(node_.get(), 0, 0, writeAndWait) != 0) return systemError(errno);
    if (const auto error = emptyDiskCache(node_.get())) return error;
    // Not repeated on EINTR or any other error: the kernel reports a lost write once, a second call would find none.
    return ::fsync(node_.get()) == 0 ? std::error_code() : systemError(errno);
}

DiskBytes::ReadBack NodeBytes::readBack(std::uint64_t offset, std::span<std::byte> into) {
    if (direct_) {
        const std::error_code error = read(offset, into);
        // read() may have had to give direct mode up on the way.
        if (error || direct_) return {error, true};
    }
    // Without RANDOM the kernel would read ahead, and the next piece would look cached.
    ::posix_fadvise(node_.get(), 0, 0, POSIX_FADV_RANDOM);
    ::posix_fadvise(node_.get(), static_cast<off_t>(offset), static_cast<off_t>(into.size()), POSIX_FADV_DONTNEED);
    const bool fromDisk = notInCache(offset, into.size());
    return {read(offset, into), fromDisk};
}

/// Some nodes let themselves be opened with O_DIRECT and then refuse each access. True when that was it, once.
bool NodeBytes::leftDirectMode(int errorNumber) {
    if (errorNumber != EINVAL || !direct_) return false;
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
