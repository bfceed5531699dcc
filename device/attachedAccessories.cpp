#include "device/attachedAccessories.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/utf8.h"
#include "device/repairedDeviceName.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// Takes the number at the front of `text` away.
std::uint64_t takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

}  // namespace

std::optional<std::vector<UsbDevice>> attachedAccessories(DeviceRegistry& registry) {
    RegistryAnswer answer = registry.usbDevices(kAccessoryVendor, kAccessoryProduct);
    if (answer.status > 0 || !answer.devices) return std::nullopt;
    for (UsbDevice& device : *answer.devices) {
        device.name = repairedDeviceName(device.name);
        device.serial = repairedUTF8(device.serial);
    }
    std::erase_if(*answer.devices, [](const UsbDevice& device) { return device.name.empty(); });
    return std::move(answer.devices);
}

// Numbers within the names count as numbers, all else as it stands.
bool isPortBefore(std::string_view left, std::string_view right) {
    while (!left.empty() && !right.empty()) {
        if (isDigit(left.front()) && isDigit(right.front())) {
            const std::uint64_t leftNumber = takeNumber(left);
            const std::uint64_t rightNumber = takeNumber(right);
            if (leftNumber != rightNumber) return leftNumber < rightNumber;
        } else {
            if (left.front() != right.front()) return left.front() < right.front();
            left.remove_prefix(1);
            right.remove_prefix(1);
        }
    }
    return left.size() < right.size();
}

void sortByPort(std::vector<UsbDevice>& accessories) {
    std::stable_sort(accessories.begin(), accessories.end(),
                     [](const UsbDevice& left, const UsbDevice& right) { return isPortBefore(left.port, right.port); });
}

std::string inWords(const UsbDevice& accessory) {
    std::string words = accessory.disk.value_or("one without a disk") + " (";
    if (!accessory.serial.empty()) words += "serial number " + accessory.serial + ", ";
    return words + "port " + accessory.port + ")";
}

}  // namespace kestrav
