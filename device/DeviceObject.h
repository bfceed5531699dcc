#pragma once

#include <cstdint>
#include <string>

namespace kestrav {

/// The function table of a USB device plug-in. It is declared and not defined because nothing calls its functions.
struct IOUSBDeviceStruct;

/// What is known of the accessory that was found last. A default-constructed one is the empty record.
struct DeviceObject {
    std::uint32_t id = 0;  ///< the device registry's handle; 0 when there is none
    std::string name;      ///< UTF-8, at most 127 bytes
    // frozen: F24
    IOUSBDeviceStruct** interface = nullptr;  ///< held only; always absent
    std::uint32_t locationID = 0;             ///< held only; always 0
    std::string bsdName;  ///< the disk's name after "/dev/"; "nil" for a device without one, empty for no device

    /// Equal in every field.
    bool operator==(const DeviceObject&) const = default;
};

/// Whether the system has made a disk for the accessory that was found.
inline bool hasDisk(const DeviceObject& device) {
    return !device.bsdName.empty() && device.bsdName != "nil";
}

}  // namespace kestrav
