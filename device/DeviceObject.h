#pragma once

#include <cstdint>
#include <string>

namespace kestrav {

/// The function table of a USB device plug-in. Nothing here calls one, so nothing here says what is in it.
struct IOUSBDeviceStruct;

/// What is known of the accessory that was found last. A default-constructed one is the empty record.
struct DeviceObject {
    std::uint32_t id = 0;                     ///< the device registry's handle; 0 when there is none
    std::string name;                         ///< UTF-8, at most 127 bytes
    IOUSBDeviceStruct** interface = nullptr;  ///< held only; always absent
    std::uint32_t locationID = 0;             ///< held only; always 0
    std::string bsdName;  ///< the disk's name after "/dev/"; "nil" for a device without one, empty for no device

    bool operator==(const DeviceObject&) const = default;
};

}  // namespace kestrav
