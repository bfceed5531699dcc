#include "tests/sandbox/PrivateBus.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

std::filesystem::path newFolder() {
    std::string name = std::filesystem::temp_directory_path() / "kestrav-bus-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the bus");
    return name;
}

[[noreturn]] void runDaemon(const std::string& config, int addressFd) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(addressFd, 3);
    const std::string option = "--config-file=" + config;
    ::execl("/usr/bin/dbus-daemon", "dbus-daemon", option.c_str(), "--nofork", "--nopidfile", "--print-address=3",
            static_cast<char*>(nullptr));
    ::_exit(127);
}

}  // namespace

PrivateBus::PrivateBus(const std::string& policy)
    : folder_(newFolder()),
      address_("unix:path=" + (folder_ / "bus").string()) {
    std::filesystem::create_directory(folder_ / "services");
    std::ofstream(folder_ / "bus.conf")
        << R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN" )"
        << R"("http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd"><busconfig><type>kestrav-test</type>)"
        << "<listen>" << address_ << "</listen><auth>EXTERNAL</auth><servicedir>" << (folder_ / "services").string()
        << "</servicedir>" << policy << "</busconfig>";
    start();
}

PrivateBus::~PrivateBus() {
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateBus::start() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    const std::string config = folder_ / "bus.conf";
    pid_ = ::fork();
    if (pid_ == 0) runDaemon(config, writeEnd.get());
    writeEnd.reset();
    char line[512];
    // The address comes once the daemon listens.
    if (::read(readEnd.get(), line, sizeof line) <= 0) throw std::runtime_error("dbus-daemon did not start");
}

void PrivateBus::kill() {
    if (pid_ <= 0) return;
    signalOne(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
    std::filesystem::remove(folder_ / "bus");
}

void PrivateBus::addActivatable(const std::string& name, const std::string& command) const {
    std::ofstream(folder_ / "services" / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
    const std::string call = "DBUS_SESSION_BUS_ADDRESS='" + address_ +
                             "' dbus-send --session --print-reply --dest=org.freedesktop.DBus / "
                             "org.freedesktop.DBus.ReloadConfig >/dev/null";
    if (std::system(call.c_str()) != 0) throw std::runtime_error("the bus did not reload");
}

}  // namespace kestrav
