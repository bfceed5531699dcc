#pragma once

#include <algorithm>
#include <cerrno>
#include <map>
#include <string>
#include <vector>

#include "device/DiskCalls.h"

namespace kestrav {

/// Disks in memory, by the path of their node. They don't grow, and behave as the system does at their end.
class FakeDisks final : public DiskCalls {
  public:
    std::map<std::string, std::vector<std::byte>> disks;
    std::vector<std::string> journal;        ///< what was done: "unmount /media/x", "open r /dev/x", "close"
    std::map<int, std::string> openNodes;    ///< the descriptors that were not closed yet
    int firstDescriptor = 3;                 ///< what an open gives
    bool openingIsDenied = false;            ///< to this user
    bool transfersFail = false;              ///< every transfer gives -1
    std::int64_t longestTransfer = 1 << 30;  ///< a transfer moves no more than that

    int open(const std::string& path, DiskAccess access) override {
        journal.push_back(std::string("open ") + (access == DiskAccess::readOnly ? "r " : "rw ") + path);
        errno = openingIsDenied ? EACCES : ENOENT;
        if (openingIsDenied || !disks.contains(path)) return -1;
        if (firstDescriptor >= 0) openNodes[firstDescriptor] = path;
        return firstDescriptor;
    }

    void close(int descriptor) override {
        journal.emplace_back(openNodes.erase(descriptor) == 1 ? "close" : "close of what is not open");
    }

    std::int64_t pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) override {
        const std::span<std::byte> area = areaAt(descriptor, offset, buffer.size());
        if (transfersFail || offset < 0) return -1;
        std::copy(area.begin(), area.end(), buffer.begin());
        return static_cast<std::int64_t>(area.size());
    }

    std::int64_t pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) override {
        const std::span<std::byte> area = areaAt(descriptor, offset, data.size());
        if (transfersFail || offset < 0) return -1;
        std::copy_n(data.begin(), area.size(), area.begin());
        return static_cast<std::int64_t>(area.size());
    }

    void unmount(const std::string& path) override { journal.push_back("unmount " + path); }

  private:
    std::span<std::byte> areaAt(int descriptor, std::int64_t offset, std::size_t size) {
        std::span<std::byte> disk = disks.at(openNodes.at(descriptor));
        if (offset < 0 || static_cast<std::size_t>(offset) >= disk.size()) return {};
        disk = disk.subspan(static_cast<std::size_t>(offset));
        return disk.first(std::min({disk.size(), size, static_cast<std::size_t>(longestTransfer)}));
    }
};

}  // namespace kestrav
