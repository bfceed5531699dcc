#include "tests/services/helper/FakeLogind.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "base/SdBusPointers.h"
#include "base/UniqueFd.h"
#include "tests/eventually.h"

namespace kestrav {
namespace {

constexpr const char* kFile = "/run/inhibitors";

struct Logind {
    std::string mode;
    UniqueFd held;
};

void say(const std::string& line) {
    std::ofstream(kFile, std::ios::app) << line << '\n';
}

int onInhibit(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& logind = *static_cast<Logind*>(self);
    const char* what = nullptr;
    const char* who = nullptr;
    const char* why = nullptr;
    const char* mode = nullptr;
    if (sd_bus_message_read(message, "ssss", &what, &who, &why, &mode) < 0) return -EINVAL;
    if (logind.mode != mode) {
        say(std::string("refused ") + mode);
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "no");
    }
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return -EMFILE;
    logind.held.reset(ends[0]);
    const UniqueFd given(ends[1]);
    say(std::string("gave ") + what + " " + mode);
    return sd_bus_reply_method_return(message, "h", given.get());
}

const sd_bus_vtable kManager[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Inhibit", "ssss", "h", onInhibit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

[[noreturn]] void serve(const std::string& mode) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    Logind logind{mode, {}};
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    const SdBusPtr bus(raw);
    sd_bus_set_address(raw, "unix:path=/run/dbus/system_bus_socket");
    sd_bus_set_bus_client(raw, 1);
    sd_bus_start(raw);
    sd_bus_add_object_vtable(raw, nullptr, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", kManager,
                             &logind);
    if (sd_bus_request_name(raw, "org.freedesktop.login1", 0) < 0) ::_exit(1);
    say("ready");
    while (true) {
        while (sd_bus_process(raw, nullptr) > 0) {
        }
        pollfd holder{logind.held.get(), 0, 0};
        if (logind.held && ::poll(&holder, 1, 0) == 1) {
            say("released");
            logind.held.reset();
        }
        sd_bus_wait(raw, 10'000);
    }
}

}  // namespace

FakeLogind::FakeLogind(const std::string& mode) {
    const pid_t child = ::fork();
    if (child == 0) serve(mode);
    process_ = ChildProcess(child);
    eventually([] { return !said().empty(); });
}

std::string FakeLogind::said() {
    std::ifstream file(kFile);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace kestrav
