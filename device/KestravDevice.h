#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/AccessoryFinder.h"
#include "device/DeviceObject.h"
#include "device/ImageSender.h"
#include "device/ParentLog.h"
#include "device/RawDisk.h"

namespace kestrav {

class CommandService;
class DeviceRegistry;
class DiskCalls;
class MountedVolumes;

/// A UUID's 16 bytes in the order in which they are written.
using Uuid = std::array<std::uint8_t, 16>;

/// The update engine: finds the accessory, reads and writes its disk, and has images written onto it. The work is done
/// by its parts: `AccessoryFinder`, `RawDisk` and `ImageSender`.
///
/// Progress lines go to `parent`; with none set they are dropped. All work is done within the call, on the caller's
/// thread; one object is never used by two threads at once. Operations report failure by their result. What stops the
/// process instead is said at each operation.
class KestravDevice {
  public:
    /// The references are not owned and outlive this object. `console` takes the one report that isn't a log line.
    KestravDevice(DeviceRegistry& registry, MountedVolumes& volumes, DiskCalls& disks, CommandService& commands,
                  std::ostream& console);
    KestravDevice(const KestravDevice&) = delete;
    KestravDevice& operator=(const KestravDevice&) = delete;

    /// Fields with their accessors. The identifiers are the accessory's; the others are only kept.
    std::int64_t vendorID() const { return finder_.vendorID(); }
    void setVendorID(std::int64_t value) { finder_.setVendorID(value); }
    std::int64_t productID() const { return finder_.productID(); }
    void setProductID(std::int64_t value) { finder_.setProductID(value); }
    std::uint32_t gRawAddedIter() const { return gRawAddedIter_; }
    void setGRawAddedIter(std::uint32_t value) { gRawAddedIter_ = value; }
    std::uint32_t gRawRemovedIter() const { return gRawRemovedIter_; }
    void setGRawRemovedIter(std::uint32_t value) { gRawRemovedIter_ = value; }
    /// What the last successful match found: a plain field, without accessors.
    DeviceObject device;
    const std::shared_ptr<LogSink>& parent() const { return log_.parent(); }
    void setParent(std::shared_ptr<LogSink> value) { log_.setParent(std::move(value)); }
    bool active() const { return active_; }
    void setActive(bool value) { active_ = value; }
    const std::optional<Uuid>& kIOUSBDeviceUserClientTypeID() const { return kIOUSBDeviceUserClientTypeID_; }
    const std::optional<Uuid>& kIOUSBDeviceInterfaceID() const { return kIOUSBDeviceInterfaceID_; }
    const std::optional<Uuid>& kIOCFPlugInInterfaceID() const { return kIOCFPlugInInterfaceID_; }

    /// Looks for the accessory and keeps the last match in `device`; without a match `device` stays as it was.
    /// Returns 0, or 5 when the registry is out of reach, which is also reported on the console.
    std::int32_t detect(std::int64_t vendor, std::int64_t product) { return finder_.detect(vendor, product); }

    /// The paths of the volumes mounted in the desktop's folders, each of them logged. They may be of any disk.
    std::vector<std::string> getDrives();

    /// Reads `length` bytes at `offset`, both in bytes, from the raw node. The first of the drives is unmounted before.
    /// Empty on any failure, a length that memory doesn't hold included. One read of the system is made, which may
    /// move fewer bytes (on Linux never more than 2 GiB); the rest of the result is zeros then.
    /// Stops the process on a negative length.
    std::vector<std::byte> readDevice(std::int64_t offset, std::int64_t length) {
        return rawDisk_.readDevice(offset, length);
    }

    /// Writes the first `length` bytes of `data` at `offset` to the block node; beyond the end of `data` zeros are
    /// written. The first of the drives is unmounted before. True when at least one byte was written.
    bool writeDevice(std::int64_t offset, std::int64_t length, std::span<const std::byte> data) {
        return rawDisk_.writeDevice(offset, length, data);
    }

    /// Have the command service write the file at `path` onto the accessory, from block 1536 for a firmware and from
    /// block 2048 for an icon. True when the commands were handed over: whether they did their work is for the
    /// service to say. Stop the process when the file can't be read to its end.
    bool firmwareUpdate(std::string_view path) { return imageSender_.firmwareUpdate(path); }
    bool iconUpdate(std::string_view path) { return imageSender_.iconUpdate(path); }

    /// The same without a look at the file, from any block of 512 bytes. False only when no disk is known.
    bool pushDevice(std::int64_t firstBlock, std::string_view filename) {
        return imageSender_.pushDevice(firstBlock, filename);
    }

    /// Has the command service read `length` blocks back, counted from `firstBlock`. Always the empty text: what was
    /// read goes the service's way.
    std::string pullDevice(std::int64_t firstBlock, std::int64_t length) {
        return imageSender_.pullDevice(firstBlock, length);
    }

    /// The bytes from `start` up to but not including `len` as ISO 8859-1, in UTF-8. `len` is an end in spite of its
    /// name. Stops the process when `start` is above it, or when a byte is asked for that isn't there.
    std::string byteToString(std::span<const std::byte> buffer, std::int64_t start, std::int64_t len) const;

    /// The command service's own operations, which are this class's too.
    std::string runWithCommand(std::string_view command, std::span<const std::string> arguments);
    void runResponderWithResp(std::optional<std::string_view> resp);

  private:
    MountedVolumes& volumes_;
    CommandService& commands_;
    ParentLog log_;
    AccessoryFinder finder_;
    RawDisk rawDisk_;
    ImageSender imageSender_;

    // frozen: F23
    std::uint32_t gRawAddedIter_ = 0;
    std::uint32_t gRawRemovedIter_ = 0;
    bool active_ = false;
    std::optional<Uuid> kIOUSBDeviceUserClientTypeID_;
    std::optional<Uuid> kIOUSBDeviceInterfaceID_;
    std::optional<Uuid> kIOCFPlugInInterfaceID_;
};

}  // namespace kestrav
