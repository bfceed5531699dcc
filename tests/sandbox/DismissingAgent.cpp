#include "tests/sandbox/DismissingAgent.h"

#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

#include "base/SdBusPointers.h"

namespace kestrav {
namespace {

/// The 22nd field of /proc/PID/stat, which polkit tells processes of one number apart by.
std::uint64_t startTime(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    const std::string text(std::istreambuf_iterator<char>(in), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 3; i < 22; ++i)
        fields >> skipped;
    std::uint64_t time = 0;
    fields >> time;
    return time;
}

int cancel(sd_bus_message* message, void* prompts, sd_bus_error*) {
    if (sd_bus_message_is_method_call(message, nullptr, "BeginAuthentication") <= 0) return 0;
    const char* action = nullptr;
    const char* text = nullptr;
    if (sd_bus_message_read(message, "ss", &action, &text) < 0) ::_exit(92);
    // With the NUL, which is its end.
    if (::write(*static_cast<int*>(prompts), text, std::strlen(text) + 1) < 0) ::_exit(93);
    return sd_bus_reply_method_errorf(message, "org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed");
}

[[noreturn]] void answerForever(pid_t subject, uid_t uid, const char* locale, int ready) {
    becomeUser(uid);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sd_bus* bus = nullptr;
    const bool connected =
        sd_bus_open_system(&bus) >= 0 && sd_bus_add_object(bus, nullptr, "/agent", cancel, &ready) >= 0;
    if (!connected) ::_exit(90);
    constexpr const char* kName = "org.freedesktop.PolicyKit1";
    const int registered =
        sd_bus_call_method(bus, kName, "/org/freedesktop/PolicyKit1/Authority", "org.freedesktop.PolicyKit1.Authority",
                           "RegisterAuthenticationAgent", nullptr, nullptr, "(sa{sv})ss", "unix-process", 3, "pid", "u",
                           static_cast<std::uint32_t>(subject), "start-time", "t", startTime(subject), "uid", "i",
                           static_cast<std::int32_t>(uid), locale, "/agent");
    if (registered < 0 || ::write(ready, "!", 1) != 1) ::_exit(91);
    for (;;) {
        const int result = sd_bus_process(bus, nullptr);
        if (result < 0) ::_exit(0);
        if (result == 0) sd_bus_wait(bus, UINT64_MAX);
    }
}

}  // namespace

DismissingAgent::DismissingAgent(pid_t subject, uid_t uid, const std::string& locale) {
    int ready[2];
    if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
    const pid_t pid = ::fork();
    if (pid == 0) answerForever(subject, uid, locale.c_str(), ready[1]);
    process_ = ChildProcess(pid);
    ::close(ready[1]);
    prompts_.reset(ready[0]);
    char byte = 0;
    if (::read(prompts_.get(), &byte, 1) != 1) throw std::runtime_error("no agent");
}

std::string DismissingAgent::message() {
    std::string text;
    pollfd wait{prompts_.get(), POLLIN, 0};
    for (char c = 0; ::poll(&wait, 1, 10'000) == 1 && ::read(prompts_.get(), &c, 1) == 1 && c != '\0';)
        text += c;
    return text;
}

bool DismissingAgent::isAsked() const {
    pollfd waiting{prompts_.get(), POLLIN, 0};
    return ::poll(&waiting, 1, 0) == 1;
}

}  // namespace kestrav
