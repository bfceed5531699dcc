#include "command/linux/HelperPresence.h"

#include "base/openSystemBus.h"

namespace kestrav {
namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

bool isStartable(sd_bus* bus, const std::string& service) {
    sd_bus_message* raw = nullptr;
    if (sd_bus_call_method(bus, kBus, kBusPath, kBus, "ListActivatableNames", nullptr, &raw, nullptr) < 0) return false;
    const SdBusMessagePtr answer(raw);
    if (sd_bus_message_enter_container(raw, 'a', "s") < 0) return false;
    const char* name = nullptr;
    while (sd_bus_message_read(raw, "s", &name) > 0) {
        if (service == name) return true;
    }
    return false;
}

}  // namespace

std::optional<HelperPresence> helperPresence(const std::string& busAddress, const std::string& service) {
    const auto opened = openSystemBus(busAddress);
    if (!opened) return std::nullopt;
    sd_bus* bus = opened.value().get();
    sd_bus_message* raw = nullptr;
    const int result =
        sd_bus_call_method(bus, kBus, kBusPath, kBus, "NameHasOwner", nullptr, &raw, "s", service.c_str());
    const SdBusMessagePtr answer(raw);
    int owned = 0;
    if (result < 0 || sd_bus_message_read(raw, "b", &owned) < 0) return std::nullopt;
    return HelperPresence{owned != 0, isStartable(bus, service)};
}

}  // namespace kestrav
