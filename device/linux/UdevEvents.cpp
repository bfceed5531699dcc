#include "device/linux/UdevEvents.h"

#include <cerrno>
#include <libudev.h>

namespace kestrav {

void UdevEvents::Release::operator()(udev* context) const {
    udev_unref(context);
}

void UdevEvents::Release::operator()(udev_monitor* monitor) const {
    udev_monitor_unref(monitor);
}

UdevEvents::UdevEvents() : context_(udev_new()) {
    if (!context_) return;
    monitor_.reset(udev_monitor_new_from_netlink(context_.get(), "udev"));
    if (!monitor_) return;
    udev_monitor* monitor = monitor_.get();
    const bool listens = udev_monitor_filter_add_match_subsystem_devtype(monitor, "usb", "usb_device") >= 0 &&
                         udev_monitor_filter_add_match_subsystem_devtype(monitor, "block", "disk") >= 0 &&
                         udev_monitor_enable_receiving(monitor) >= 0;
    if (!listens) monitor_.reset();
}

UdevEvents::~UdevEvents() = default;

int UdevEvents::descriptor() const {
    return monitor_ ? udev_monitor_get_fd(monitor_.get()) : -1;
}

bool UdevEvents::take() {
    if (!monitor_) return false;
    bool any = false;
    for (;;) {
        errno = 0;
        udev_device* device = udev_monitor_receive_device(monitor_.get());
        if (device != nullptr) udev_device_unref(device);
        // Where the kernel had no room for all of them, some are lost, which is a change, too.
        const bool isOne = device != nullptr || errno == ENOBUFS;
        if (!isOne) return any;
        any = true;
    }
}

}  // namespace kestrav
