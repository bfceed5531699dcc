#include "services/helper/bless/runningSystem.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <sys/syscall.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <vector>

#include "base/UniqueFd.h"
#include "base/openSystemBus.h"
#include "base/runChild.h"
#include "base/systemProblem.h"
#include "protocol/accessory.h"
#include "protocol/names.h"

namespace kestrav {
namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
/// How long systemd and the bus may take to read their files anew. The bus library's own 25 seconds are too short for
/// a slow computer that is starting.
constexpr std::uint64_t kPatienceMicroseconds = 120'000'000;

/// The system bus, or nothing where there is none.
SdBusPtr systemBus() {
    if (::access(kSystemBusSocket, F_OK) != 0) return {};
    auto bus = openSystemBus();
    if (!bus || sd_bus_set_method_call_timeout(bus.value().get(), kPatienceMicroseconds) < 0) return {};
    // The socket of a bus that is gone stays behind; only an answer shows that there is one.
    const char* name = nullptr;
    if (sd_bus_get_unique_name(bus.value().get(), &name) < 0) return {};
    return std::move(bus.value());
}

/// Nothing that the program says goes to whoever started this one: a reader that does not read would hold both up.
Outcome<void> run(const std::vector<std::string>& words) {
    const auto started = runChild(words);
    if (!started) return systemProblem(words.at(0) + " can't be run", started.problem().cause.value());
    if (started.value().exitStatus == 0) return {};
    return failed(words.at(0) + " did not take the change. Restart the computer.");
}

pid_t helperProcess(sd_bus* bus) {
    SdBusError error;
    sd_bus_message* raw = nullptr;
    const int result = sd_bus_call_method(bus, kBus, "/org/freedesktop/DBus", kBus, "GetConnectionUnixProcessID",
                                          error.out(), &raw, "s", kHelperLabel);
    const SdBusMessagePtr answer(raw);
    std::uint32_t pid = 0;
    if (result < 0 || sd_bus_message_read(raw, "u", &pid) < 0) return -1;
    return static_cast<pid_t>(pid);
}

}  // namespace

Outcome<void> reloadBus() {
    const SdBusPtr bus = systemBus();
    if (!bus) return {};
    SdBusError error;
    const int result = sd_bus_call_method(bus.get(), kBus, "/org/freedesktop/DBus", kBus, "ReloadConfig", error.out(),
                                          nullptr, nullptr);
    if (result < 0) return systemProblem("The message bus did not take the change", -result);
    return {};
}

Outcome<void> reloadServiceUnits() {
    if (sd_booted() <= 0) return {};
    const SdBusPtr bus = systemBus();
    if (!bus) return failed("systemd runs, but the message bus that reaches it does not answer.");
    SdBusError error;
    const int result = sd_bus_call_method(bus.get(), "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                          "org.freedesktop.systemd1.Manager", "Reload", error.out(), nullptr, nullptr);
    if (result < 0) return systemProblem("systemd did not take the change", -result);
    return {};
}

Outcome<void> reloadDeviceRules() {
    if (::access("/run/udev/control", F_OK) != 0) return {};
    if (auto reloaded = run({"/usr/bin/udevadm", "control", "--reload"}); !reloaded) return reloaded;
    return run({"/usr/bin/udevadm", "trigger", "--subsystem-match=block",
                std::string("--property-match=ID_VENDOR_ID=") + kAccessoryVendorDigits,
                std::string("--property-match=ID_MODEL_ID=") + kAccessoryProductDigits});
}

std::string runningPolkitVersion() {
    const SdBusPtr bus = systemBus();
    if (!bus) return {};
    SdBusError error;
    char* raw = nullptr;
    const int result =
        sd_bus_get_property_string(bus.get(), "org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
                                   "org.freedesktop.PolicyKit1.Authority", "BackendVersion", error.out(), &raw);
    const std::unique_ptr<char, decltype(&std::free)> version(raw, std::free);
    return result >= 0 && version ? std::string(version.get()) : std::string();
}

void retireRunningHelper() {
    const SdBusPtr bus = systemBus();
    if (!bus) return;
    const pid_t pid = helperProcess(bus.get());
    if (pid <= 0) return;
    const UniqueFd process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    // Asked again, the bus still names it: so the number did not pass to another process before it was pinned.
    if (!process || helperProcess(bus.get()) != pid) return;
    ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
}

}  // namespace kestrav
