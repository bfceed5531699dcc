#include "services/helper/bless/RunningSystem.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <spawn.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <vector>

#include "base/SdBusPointers.h"
#include "base/UniqueFd.h"
#include "services/helper/bless/InstallError.h"

namespace kestrav {
namespace {

constexpr const char* kBusSocket = "/run/dbus/system_bus_socket";
constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kHelper = "com.corvatel.KestravHelper";

/// The system bus, or nothing where there is none.
SdBusPtr systemBus() {
    if (::access(kBusSocket, F_OK) != 0) return {};
    sd_bus* raw = nullptr;
    if (sd_bus_new(&raw) < 0) return {};
    SdBusPtr bus(raw);
    const std::string address = std::string("unix:path=") + kBusSocket;
    if (sd_bus_set_address(raw, address.c_str()) < 0 || sd_bus_set_bus_client(raw, 1) < 0 || sd_bus_start(raw) < 0) {
        return {};
    }
    // The socket of a bus that is gone stays behind; only an answer shows that there is one.
    const char* name = nullptr;
    if (sd_bus_get_unique_name(raw, &name) < 0) return {};
    return bus;
}

/// Nothing that the child says goes to whoever started this program: a reader that does not read would hold both up.
class SilentChild {
  public:
    SilentChild() {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    ~SilentChild() { ::posix_spawn_file_actions_destroy(&actions_); }
    SilentChild(const SilentChild&) = delete;
    SilentChild& operator=(const SilentChild&) = delete;
    const posix_spawn_file_actions_t* actions() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

void run(std::initializer_list<const char*> words) {
    std::vector<char*> argv;
    for (const char* word : words)
        argv.push_back(const_cast<char*>(word));
    argv.push_back(nullptr);
    char* noEnvironment[] = {nullptr};
    pid_t child = -1;
    const int error = ::posix_spawn(&child, argv[0], SilentChild().actions(), nullptr, argv.data(), noEnvironment);
    if (error != 0) {
        throw systemFailure(std::string(argv[0]) + " can't be run", error);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw InstallError(std::string(argv[0]) + " did not take the change. Restart the computer.");
    }
}

pid_t helperProcess(sd_bus* bus) {
    SdBusError error;
    sd_bus_message* raw = nullptr;
    const int result = sd_bus_call_method(bus, kBus, "/org/freedesktop/DBus", kBus, "GetConnectionUnixProcessID",
                                          error.out(), &raw, "s", kHelper);
    const SdBusMessagePtr answer(raw);
    std::uint32_t pid = 0;
    if (result < 0 || sd_bus_message_read(raw, "u", &pid) < 0) return -1;
    return static_cast<pid_t>(pid);
}

}  // namespace

void reloadBus() {
    const SdBusPtr bus = systemBus();
    if (!bus) return;
    SdBusError error;
    const int result = sd_bus_call_method(bus.get(), kBus, "/org/freedesktop/DBus", kBus, "ReloadConfig", error.out(),
                                          nullptr, nullptr);
    if (result < 0) throw systemFailure("The message bus did not take the change", -result);
}

void reloadServiceUnits() {
    if (sd_booted() <= 0) return;
    const SdBusPtr bus = systemBus();
    if (!bus) throw InstallError("systemd runs, but the message bus that reaches it does not answer.");
    SdBusError error;
    const int result = sd_bus_call_method(bus.get(), "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                          "org.freedesktop.systemd1.Manager", "Reload", error.out(), nullptr, nullptr);
    if (result < 0) throw systemFailure("systemd did not take the change", -result);
}

void reloadDeviceRules() {
    if (::access("/run/udev/control", F_OK) != 0) return;
    run({"/usr/bin/udevadm", "control", "--reload"});
    run({"/usr/bin/udevadm", "trigger", "--subsystem-match=block", "--property-match=ID_VENDOR_ID=10d6",
         "--property-match=ID_MODEL_ID=fd01"});
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
