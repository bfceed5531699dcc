#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;  // NOLINT: the library's own name

namespace kestrav {

/// The simulator's accessory, plugged into this process and what it starts. Its disk is /dev/sdzz with the aliases
/// /dev/rsdzz and /dev/sdzzs1. Needs the umockdev preload library. One at a time.
class SimulatedAccessory {
  public:
    using Edits = std::vector<std::pair<std::string, std::string>>;

    /// `disk` holds the disk's bytes. In the simulator's description each first text of `edits` becomes its second.
    explicit SimulatedAccessory(std::string_view disk, const Edits& edits = {});
    ~SimulatedAccessory();
    SimulatedAccessory(const SimulatedAccessory&) = delete;
    SimulatedAccessory& operator=(const SimulatedAccessory&) = delete;

    static constexpr const char* usbPath = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2";
    static constexpr const char* diskPath =
        "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/host2/target2:0:0/2:0:0:0/block/sdzz";

    /// Changes an attribute in the simulated sysfs.
    void setAttribute(const char* device, const char* name, const char* value);

    /// Where the simulated /dev really is.
    std::filesystem::path nodes() const { return root_ / "dev"; }

    std::string diskBytes() const;

  private:
    UMockdevTestbed* bed_;
    std::filesystem::path root_;
};

}  // namespace kestrav
