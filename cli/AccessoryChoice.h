#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrav {

struct UsbDevice;

/// Which of the attached accessories a call means. An empty list leaves all of them.
struct AccessoryChoice {
    std::vector<std::string> disks{};    ///< the kernel's names; "/dev/" before one is passed over
    std::vector<std::string> serials{};  ///< serial numbers
    std::vector<std::string> ports{};    ///< for example "1-2.3"

    /// The disk's name without "/dev/" before it.
    static std::string_view nameOfDisk(std::string_view disk);

    /// Whether nothing was chosen.
    bool isEmpty() const { return disks.empty() && serials.empty() && ports.empty(); }

    /// Whether the device is one of those that are meant.
    bool includes(const UsbDevice& device) const;

    /// What was chosen, for a sentence: "the serial number KA17 or KA18, the port 1-2.3".
    std::string inWords() const;
};

}  // namespace kestrav
