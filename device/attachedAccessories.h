#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/DeviceRegistry.h"

namespace kestrav {

/// The accessories that the registry knows and the engine would take, in the registry's order, so that the engine's
/// choice is the last one. Their names and serial numbers are whole UTF-8. Absent when the registry is out of reach.
std::optional<std::vector<UsbDevice>> attachedAccessories(DeviceRegistry& registry);

/// Whether a port stands before another one: 1-2 before 1-10.
bool isPortBefore(std::string_view left, std::string_view right);

/// Puts them in the order of their ports, which stays the same, whichever was plugged in first.
void sortByPort(std::vector<UsbDevice>& accessories);

/// The accessory in a sentence: "sdb (serial number KA17, port 1-2.3)".
std::string inWords(const UsbDevice& accessory);

}  // namespace kestrav
