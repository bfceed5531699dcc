#include "device/KestravDevice.h"

#include "base/stopProcess.h"
#include "command/CommandService.h"
#include "device/listDrives.h"

namespace kestrav {

namespace {

// What the platform that these identifiers come from publishes for them.
constexpr Uuid kUserClientTypeID{0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4,
                                 0xA5, 0x4F, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
constexpr Uuid kDeviceInterfaceID{0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4,
                                  0x8B, 0x45, 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61};
constexpr Uuid kPlugInInterfaceID{0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4,
                                  0x91, 0xD4, 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F};

void appendLatin1(std::string& text, std::byte value) {
    const auto code = std::to_integer<unsigned char>(value);
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    text += static_cast<char>(0xC0 | (code >> 6));
    text += static_cast<char>(0x80 | (code & 0x3F));
}

}  // namespace

KestravDevice::KestravDevice(DeviceRegistry& registry, MountedVolumes& volumes, DiskCalls& disks,
                             CommandService& commands, std::ostream& console)
    : volumes_(volumes),
      commands_(commands),
      finder_(registry, device, log_, console),
      rawDisk_(finder_, volumes, disks, log_),
      imageSender_(finder_, commands, log_),
      kIOUSBDeviceUserClientTypeID_(kUserClientTypeID),
      kIOUSBDeviceInterfaceID_(kDeviceInterfaceID),
      kIOCFPlugInInterfaceID_(kPlugInInterfaceID) {}

// frozen: F22
std::string KestravDevice::byteToString(std::span<const std::byte> buffer, std::int64_t start, std::int64_t len) const {
    require(start <= len);
    std::string text;
    if (start == len) return text;
    require(start >= 0 && static_cast<std::uint64_t>(len) <= buffer.size());
    for (const std::byte value : buffer.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(len - start)))
        appendLatin1(text, value);
    return text;
}

std::vector<std::string> KestravDevice::getDrives() {
    return listDrives(volumes_, log_);
}

std::string KestravDevice::runWithCommand(std::string_view command, std::span<const std::string> arguments) {
    return commands_.runWithCommand(command, arguments);
}

void KestravDevice::runResponderWithResp(std::optional<std::string_view> resp) {
    commands_.runResponderWithResp(resp);
}

}  // namespace kestrav
