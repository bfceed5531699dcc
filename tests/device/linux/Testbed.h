#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <umockdev.h>

namespace kestrav {

/// A sysfs and a /dev of our own, in place of the machine's for as long as the object lives.
/// The program has to be run under umockdev-wrapper.
class Testbed {
  public:
    Testbed() : bed_(umockdev_testbed_new()) {
        if (umockdev_in_mock_environment() == 0) throw std::runtime_error("run this under umockdev-wrapper");
    }

    /// Plugs in what simulator/NAME.umockdev describes.
    void plugInSimulated(const std::string& name) {
        plugInFrom(std::string(KESTRAV_SIMULATOR) + "/" + name + ".umockdev");
    }
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
