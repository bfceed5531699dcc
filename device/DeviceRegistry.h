#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrav {

/// A USB device as the system's registry knows it.
struct UsbDevice {
    std::uint32_t id = 0;             ///< a handle that tells attached devices apart
    std::string name;                 ///< as the registry has it; empty when it can't be had
    std::optional<std::string> disk;  ///< the name after "/dev/" of the whole disk made for the device
    std::string serial{};             ///< its serial number as the registry has it; empty when it tells none
    std::string port{};               ///< where it is plugged in, for example "1-2.3"; stays the same with the socket
    std::optional<std::uint64_t> diskBytes{};   ///< the disk's size
    std::vector<std::uint64_t> blockNumbers{};  ///< the system's device numbers of the disk and of its partitions
};

/// What a registry says to a question. It was out of reach if `status` is above 0 or there is no list.
struct RegistryAnswer {
    std::int32_t status = 0;                        ///< the system's number for what went wrong
    std::optional<std::vector<UsbDevice>> devices;  ///< in the registry's own order
};

/// The system's list of attached devices, asked afresh each time.
class DeviceRegistry {
  public:
    virtual ~DeviceRegistry() = default;

    /// The USB devices with these identifiers; none that went away while it was looked at. Values that no device can
    /// have, such as negative ones, match none. Stops the process when the question itself can't be put together.
    virtual RegistryAnswer usbDevices(std::int64_t vendor, std::int64_t product) = 0;
};

}  // namespace kestrav
