#include "base/openSystemBus.h"

#include "base/systemProblem.h"

namespace kestrav {

Outcome<SdBusPtr> openSystemBus(const std::string& address) {
    sd_bus* raw = nullptr;
    int result = sd_bus_new(&raw);
    SdBusPtr bus(raw);
    if (result >= 0) result = sd_bus_set_address(raw, address.c_str());
    if (result >= 0) result = sd_bus_set_bus_client(raw, 1);
    if (result >= 0) result = sd_bus_start(raw);
    if (result >= 0) return bus;
    return systemProblem("The message bus can't be reached", -result);
}

}  // namespace kestrav
