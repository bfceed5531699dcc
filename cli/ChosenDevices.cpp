#include "cli/ChosenDevices.h"

#include <utility>

#include "base/utf8.h"
#include "device/attachedAccessories.h"
#include "device/repairedDeviceName.h"
#include "protocol/accessory.h"

namespace kestrav {

ChosenDevices::ChosenDevices(DeviceRegistry& registry, AccessoryChoice choice,
                             std::function<void(const std::string&)> say)
    : registry_(registry),
      choice_(std::move(choice)),
      say_(std::move(say)) {}

RegistryAnswer ChosenDevices::usbDevices(std::int64_t vendor, std::int64_t product) {
    RegistryAnswer answer = registry_.usbDevices(vendor, product);
    taken_.reset();
    meant_ = 0;
    if (!answer.devices) return answer;
    // The engine passes over those without a name, so they don't count.
    std::erase_if(*answer.devices, [this](const UsbDevice& device) {
        return !choice_.includes(device) || repairedDeviceName(device.name).empty();
    });
    meant_ = answer.devices->size();
    if (meant_ > 1 && !choice_.isEmpty()) answer.devices->clear();
    if (answer.devices->empty()) return answer;
    taken_ = answer.devices->back();
    taken_->serial = repairedUTF8(taken_->serial);
    if (meant_ > 1 && say_) {
        std::exchange(say_, nullptr)(std::to_string(meant_) + " accessories are attached; " + inWords(*taken_) +
                                     " is taken. Choose another one with --port, --serial or --disk: "
                                     "'kestravctl list' shows them.");
    }
    return answer;
}

std::string ChosenDevices::whyNone() const {
    if (meant_ > 1)
        return std::to_string(meant_) + " accessories with " + choice_.inWords() +
               " are attached, and one can be meant.";
    const std::string which = choice_.isEmpty() ? "(USB " KESTRAV_ACCESSORY_USB ")" : "with " + choice_.inWords();
    return "No accessory " + which + " is attached.";
}

std::string ChosenDevices::remedyForNone() const {
    if (meant_ > 1) return "Choose by --port: 'kestravctl list' shows the ports.";
    return choice_.isEmpty() ? "Plug it in and try again." : "'kestravctl list' shows those that are.";
}

}  // namespace kestrav
