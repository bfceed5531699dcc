#pragma once

#include <memory>

#include "device/DeviceEvents.h"

struct udev;
struct udev_monitor;

namespace kestrav {

/// What udev tells of USB devices and of whole disks, once it has given them their names. The kernel keeps everything
/// else from this process, so that it is not woken for it. Without udev nothing is ever told.
class UdevEvents final : public DeviceEvents {
  public:
    UdevEvents();
    ~UdevEvents() override;
    UdevEvents(const UdevEvents&) = delete;
    UdevEvents& operator=(const UdevEvents&) = delete;

    int descriptor() const override;
    bool take() override;

  private:
    struct Release {
        void operator()(udev* context) const;
        void operator()(udev_monitor* monitor) const;
    };
    std::unique_ptr<udev, Release> context_;
    std::unique_ptr<udev_monitor, Release> monitor_;
};

}  // namespace kestrav
