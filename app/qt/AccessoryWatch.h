#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <optional>
#include <vector>

#include "device/DeviceRegistry.h"

namespace kestrav {

class DeviceEvents;

/// Knows which accessories are attached, without asking before something has changed. Used on the main thread.
class AccessoryWatch final : public QObject {
  public:
    /// In the order in which the engine sees them; absent where the registry is out of reach.
    using Accessories = std::optional<std::vector<UsbDevice>>;

    /// Neither is owned; both outlive this object. `changed` is called with those that are attached, by begin() for the
    /// first time and then from the event loop.
    AccessoryWatch(DeviceRegistry& registry, DeviceEvents& events, std::function<void(const Accessories&)> changed);

    /// Asks for the first time, and listens from then on. To be called once.
    void begin();
    /// Asks the registry now, and calls `changed`.
    void look();

  private:
    DeviceRegistry& registry_;
    DeviceEvents& events_;
    std::function<void(const Accessories&)> changed_;
    QSocketNotifier notifier_;
    QTimer soon_;
};

}  // namespace kestrav
