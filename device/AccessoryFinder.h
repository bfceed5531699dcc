#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>

#include "device/DeviceObject.h"
#include "device/DiskNodes.h"
#include "protocol/accessory.h"

namespace kestrav {

class DeviceRegistry;
class LogSink;

/// Looks for the accessory among the attached USB devices and keeps what it found in a record.
class AccessoryFinder {
  public:
    /// The references are not owned and outlive this object. `device` is the record that is kept; `log` takes the
    /// engine's lines, `console` the one report that isn't a log line.
    AccessoryFinder(DeviceRegistry& registry, DeviceObject& device, LogSink& log, std::ostream& console);

    /// The accessory's USB identifiers, for callers to ask with.
    std::int64_t vendorID() const { return vendorID_; }
    void setVendorID(std::int64_t value) { vendorID_ = value; }
    std::int64_t productID() const { return productID_; }
    void setProductID(std::int64_t value) { productID_ = value; }

    /// Asks the registry for devices with these identifiers. The last one that has a name replaces the record; without
    /// a match it stays as it was. Returns 0, or 5 when the registry is out of reach, which the console is told, too.
    std::int32_t detect(std::int64_t vendor, std::int64_t product);

    /// The same with the identifiers that were set.
    std::int32_t detectAccessory() { return detect(vendorID_, productID_); }

    /// The same, but a registry out of reach empties the record.
    void detectAccessoryOrForgetIt();

    /// The nodes of the disk in the record. Absent when no disk is known, and then the log says so.
    std::optional<DiskNodes> nodesOrLogNotReady() const;

  private:
    DeviceRegistry& registry_;
    DeviceObject& device_;
    LogSink& log_;
    std::ostream& console_;
    std::int64_t vendorID_ = kAccessoryVendor;
    std::int64_t productID_ = kAccessoryProduct;
};

}  // namespace kestrav
