#include "cli/AccessoryArrivals.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "device/DiskNodes.h"
#include "device/attachedAccessories.h"

namespace kestrav {
namespace {

// udev makes the node some hundredths of a second after the disk. Where its rule is missing it never does.
constexpr std::chrono::seconds kTimeForTheNode{5};

}  // namespace

AccessoryArrivals::AccessoryArrivals(const Backends& backends, AccessoryChoice choice)
    : backends_(backends),
      choice_(std::move(choice)) {}

std::optional<std::vector<UsbDevice>> AccessoryArrivals::take(When when) {
    auto attached = attachedAccessories(backends_.registry);
    if (!attached) return std::nullopt;
    const auto isThere = [&attached](std::uint32_t id) {
        return std::any_of(attached->begin(), attached->end(),
                           [id](const UsbDevice& device) { return device.id == id; });
    };
    // Numbers come round again, so those of accessories that have gone are forgotten.
    std::erase_if(known_, [&](std::uint32_t id) { return !isThere(id); });
    std::erase_if(seenFirst_, [&](const auto& entry) { return !isThere(entry.first); });
    std::vector<UsbDevice> arrived;
    for (UsbDevice& device : *attached) {
        if (known_.contains(device.id) || !choice_.includes(device)) continue;
        if (when == When::ready && !isReady(device)) continue;
        known_.insert(device.id);
        arrived.push_back(std::move(device));
    }
    sortByPort(arrived);
    return arrived;
}

bool AccessoryArrivals::isReady(const UsbDevice& device) {
    if (device.disk && backends_.exists(DiskNodes(*device.disk).rawDisk)) return true;
    const auto first = seenFirst_.try_emplace(device.id, Clock::now()).first->second;
    return Clock::now() - first >= kTimeForTheNode;
}

}  // namespace kestrav
