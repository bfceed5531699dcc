#include "app/qt/AccessoryWatch.h"

#include <chrono>
#include <utility>

#include "device/DeviceEvents.h"
#include "device/attachedAccessories.h"

namespace kestrav {
namespace {

// A hub of twenty tells of a hundred devices within a second; the registry is asked a few times for all of them.
constexpr std::chrono::milliseconds kGathering{150};

}  // namespace

AccessoryWatch::AccessoryWatch(DeviceRegistry& registry, DeviceEvents& events,
                               std::function<void(const Accessories&)> changed)
    : registry_(registry),
      events_(events),
      changed_(std::move(changed)),
      notifier_(QSocketNotifier::Read) {
    soon_.setSingleShot(true);
    soon_.setInterval(kGathering);
    connect(&soon_, &QTimer::timeout, this, &AccessoryWatch::look);
    connect(&notifier_, &QSocketNotifier::activated, this, [this] {
        if (events_.take() && !soon_.isActive()) soon_.start();
    });
}

void AccessoryWatch::begin() {
    if (events_.descriptor() >= 0) {
        notifier_.setSocket(events_.descriptor());
        notifier_.setEnabled(true);
    }
    look();
}

void AccessoryWatch::look() {
    changed_(attachedAccessories(registry_));
}

}  // namespace kestrav
