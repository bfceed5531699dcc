#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <umockdev.h>

#include "tests/places.h"

namespace kestrav {

/// A sysfs and a /dev of our own, in place of the machine's for as long as the object lives.
/// The program has to be run under umockdev-wrapper.
class Testbed {
  public:
    static constexpr const char* kUsb = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2";
    static constexpr const char* kDisk =
        "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/host2/target2:0:0/2:0:0:0/block/sdzz";

    Testbed() : bed_(umockdev_testbed_new()) {
        if (umockdev_in_mock_environment() == 0) throw std::runtime_error("run this under umockdev-wrapper");
    }

    /// Plugs in what simulator/NAME.umockdev describes.
    void plugInSimulated(const std::string& name) { plugInFrom(places::ofSource("simulator/" + name + ".umockdev")); }
    void plugInFrom(const std::string& file) {
        if (umockdev_testbed_add_from_file(bed_.get(), file.c_str(), nullptr) == 0)
            throw std::runtime_error("no description in " + file);
    }
    /// Plugs in what `description` says, in umockdev's own form.
    void plugIn(const std::string& description) {
        if (umockdev_testbed_add_from_string(bed_.get(), description.c_str(), nullptr) == 0)
            throw std::runtime_error("a description that isn't one");
    }
    /// Has udev tell that something became of the device at `path`: "add", "change" or "remove".
    void announce(const std::string& path, const std::string& action) {
        umockdev_testbed_uevent(bed_.get(), path.c_str(), action.c_str());
    }
    /// The simulator's accessory comes and goes, as the kernel tells of it. What is below goes first, and the event of
    /// the device comes while it is still there.
    void attachAccessory() {
        plugInSimulated("accessory");
        announce(kUsb, "add");
        announce(kDisk, "add");
    }
    void detachAccessory() {
        announce(kDisk, "remove");
        announce(kUsb, "remove");
        unplug(kUsb);
    }
    void unplug(const std::string& path) { umockdev_testbed_remove_device(bed_.get(), path.c_str()); }

    std::filesystem::path root() const {
        const std::unique_ptr<char, decltype(&g_free)> path(umockdev_testbed_get_root_dir(bed_.get()), &g_free);
        return path.get();
    }

  private:
    struct Release {
        void operator()(UMockdevTestbed* bed) const { g_object_unref(bed); }
    };
    std::unique_ptr<UMockdevTestbed, Release> bed_;
};

}  // namespace kestrav
