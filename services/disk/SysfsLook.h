#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// A look at the folders of /sys/devices, one for each device. It remembers when it saw nothing because it could not
/// look: what can't be read for want of a descriptor must not pass for what isn't there.
class SysfsLook {
  public:
    /// The folder of the block device with that number; nothing where there is none.
    std::optional<std::string> blockDevice(dev_t number);
    /// What the file `name` in that folder says, without the line end; nothing where there is no such file.
    std::optional<std::string> attribute(const std::string& folder, const char* name);
    /// The same as a number; nothing where it says anything else.
    std::optional<std::uint64_t> numberAttribute(const std::string& folder, const char* name);
    /// Which part of the kernel drives the device, for example "usb"; empty for a folder that is no device.
    std::string subsystem(const std::string& folder);
    /// The names of the folders in that folder, links left out.
    std::vector<std::string> foldersIn(const std::string& folder);

    /// The error that kept it from looking, as in errno; 0 for none.
    int shortage() const { return shortage_; }

    /// As the kernel writes a device's number, "8:1".
    static std::string shownNumber(dev_t number);

  private:
    void note(int error);
    std::string linkTarget(const std::string& path);

    int shortage_ = 0;
};

}  // namespace kestrav
