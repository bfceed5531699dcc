#include "command/linux/consentTakesAPrompt.h"

#include <chrono>
#include <cstdint>
#include <unistd.h>

#include "base/openSystemBus.h"
#include "protocol/names.h"

namespace kestrav {
namespace {

/// This process, as polkit names it. A time of 0 has polkit look the process's start up itself.
int append(sd_bus_message* message) {
    return sd_bus_message_append(message, "(sa{sv})sa{ss}us", "unix-process", 3, "pid", "u",
                                 static_cast<std::uint32_t>(::getpid()), "start-time", "t", std::uint64_t{0}, "uid",
                                 "i", static_cast<std::int32_t>(::getuid()), kRunAction, 0, 0U, "");
}

}  // namespace

bool consentTakesAPrompt() {
    if (::geteuid() == 0) return false;
    const auto bus = openSystemBus();
    if (!bus) return false;
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_call(bus.value().get(), &raw, "org.freedesktop.PolicyKit1",
                                                "/org/freedesktop/PolicyKit1/Authority",
                                                "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization");
    const SdBusMessagePtr question(raw);
    if (result < 0 || append(raw) < 0) return false;
    sd_bus_message* given = nullptr;
    constexpr std::chrono::microseconds kPatience = kAnswerPatience;
    result = sd_bus_call(bus.value().get(), raw, kPatience.count(), nullptr, &given);
    const SdBusMessagePtr answer(given);
    int authorized = 0;
    int challenge = 0;
    if (result < 0 || sd_bus_message_enter_container(given, 'r', "bba{ss}") < 0 ||
        sd_bus_message_read(given, "bb", &authorized, &challenge) < 0) {
        return false;
    }
    return authorized == 0 && challenge != 0;
}

}  // namespace kestrav
