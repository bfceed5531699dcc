#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kestrav {

class AccessoryFinder;
class DiskCalls;
class LogSink;
class MountedVolumes;

/// Reads and writes bytes of the accessory's disk through the disk's own nodes, without the command service. Each call
/// looks for the accessory, unmounts the first of the drives, whichever disk it is of, and opens and closes the node.
class RawDisk {
  public:
    /// The references are not owned and outlive this object.
    RawDisk(AccessoryFinder& finder, MountedVolumes& volumes, DiskCalls& disks, LogSink& log);

    /// See `KestravDevice`, whose operations these are.
    std::vector<std::byte> readDevice(std::int64_t offset, std::int64_t length);
    bool writeDevice(std::int64_t offset, std::int64_t length, std::span<const std::byte> data);

  private:
    void unmountFirstDrive();

    AccessoryFinder& finder_;
    MountedVolumes& volumes_;
    DiskCalls& disks_;
    LogSink& log_;
};

}  // namespace kestrav
