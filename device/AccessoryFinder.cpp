#include "device/AccessoryFinder.h"

#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "device/DeviceRegistry.h"
#include "device/LogSink.h"
#include "device/repairedDeviceName.h"

namespace kestrav {

namespace {

constexpr std::int32_t kFailure = 5;

void removeAll(std::string& text, std::string_view part) {
    std::string kept;
    std::size_t from = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, from)) {
        kept.append(text, from, at - from);
        from = at + part.size();
    }
    text = kept.append(text, from);
}

// The name is taken out of a description of the form Optional(sdb). That is why a disk's name loses its own closing
// brackets, and why a device without a disk has the name nil.
std::string bsdNameOf(const std::optional<std::string>& disk) {
    // frozen: F8
    std::string text = disk ? "Optional(" + *disk + ")" : "nil";
    // frozen: F9
    removeAll(text, "Optional(");
    removeAll(text, ")");
    return text;
}

}  // namespace

AccessoryFinder::AccessoryFinder(DeviceRegistry& registry, DeviceObject& device, LogSink& log, std::ostream& console)
    : registry_(registry),
      device_(device),
      log_(log),
      console_(console) {}

std::int32_t AccessoryFinder::detect(std::int64_t vendor, std::int64_t product) {
    const RegistryAnswer answer = registry_.usbDevices(vendor, product);
    if (answer.status > 0 || !answer.devices) {
        // The text's %08x is printed as it stands, and the status follows on a line of its own: scripts look for both.
        // frozen: F10
        console_ << "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n " << answer.status << '\n';
        return kFailure;
    }
    // frozen: F11
    for (const UsbDevice& found : *answer.devices) {
        std::string name = repairedDeviceName(found.name);
        // frozen: F13
        if (name.empty()) continue;
        device_ = DeviceObject{.id = found.id, .name = std::move(name), .bsdName = bsdNameOf(found.disk)};
    }
    // frozen: F12
    return 0;
}

void AccessoryFinder::detectAccessoryOrForgetIt() {
    if (detectAccessory() == kFailure) device_ = DeviceObject{};
}

std::optional<DiskNodes> AccessoryFinder::nodesOrLogNotReady() const {
    if (!device_.bsdName.empty()) return DiskNodes(device_.bsdName);
    log_.log("Device not ready yet!");
    return std::nullopt;
}

}  // namespace kestrav
