#include "tests/room/SystemDaemons.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "tests/room/runProgram.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
constexpr const char* kSocket = "/run/dbus/system_bus_socket";

void waitUntil(const char* what, const std::function<bool()>& holds) {
    for (int i = 0; i < 1000; ++i) {
        if (holds()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    throw std::runtime_error(std::string("waited in vain for ") + what);
}

bool busListens() {
    const UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string(kSocket).copy(address.sun_path, sizeof address.sun_path - 1);
    return ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// Asks the bus, since a question to polkitd itself would have the bus start another one.
bool polkitHasItsName() {
    return runProgram({"/usr/bin/dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                       "org.freedesktop.DBus.NameHasOwner", "string:org.freedesktop.PolicyKit1"})
               .out.find("boolean true") != std::string::npos;
}

void append(const char* path, const std::string& line) {
    std::ofstream(path, std::ios::app) << line << "\n";
}

void addToGroup(const std::string& group, const std::string& member) {
    std::ifstream in("/etc/group");
    std::ostringstream out;
    for (std::string line; std::getline(in, line);) {
        out << line;
        if (line.starts_with(group + ":")) out << (line.back() == ':' ? "" : ",") << member;
        out << "\n";
    }
    in.close();
    std::ofstream("/etc/group") << out.str();
}

}  // namespace

void SystemDaemons::start(const std::string& decision) {
    if (!decision.empty()) {
        addRule(
            "polkit.addRule(function(action) {"
            "  if (action.id == 'com.corvatel.kestrav.run') return polkit.Result." +
            decision + "; });");
    }
    startBus();
    startPolkitd();
}

void SystemDaemons::startBus() {
    bus_ = ChildProcess::start({"/usr/bin/dbus-daemon", "--system", "--nofork", "--nopidfile"});
    waitUntil("the bus", busListens);
}

void SystemDaemons::killBus() {
    bus_.end();
    fs::remove(kSocket);
}

void SystemDaemons::startPolkitd() {
    polkitd_ = ChildProcess::start({"/usr/lib/polkit-1/polkitd", "--no-debug"});
    waitUntil("polkitd", polkitHasItsName);
}

void SystemDaemons::stopPolkitd() const {
    signalOne(polkitd_.pid(), SIGSTOP);
}

void SystemDaemons::addRule(const std::string& javascript) {
    fs::create_directories("/etc/polkit-1/rules.d");
    fs::permissions("/etc/polkit-1/rules.d", fs::perms(0755));
    append("/etc/polkit-1/rules.d/10-kestrav-test.rules", javascript);
}

void SystemDaemons::addActions(const std::string& blessProgram) {
    const fs::path from = KESTRAV_ACTIONS;
    const fs::path to = "/usr/share/polkit-1/actions";
    fs::copy_file(from / "com.corvatel.kestrav.run.policy", to / "com.corvatel.kestrav.run.policy",
                  fs::copy_options::overwrite_existing);
    std::ostringstream text;
    text << std::ifstream(from / "com.corvatel.kestrav.policy.in").rdbuf();
    std::string actions = text.str();
    const std::string place = "@KESTRAV_BLESS@";
    for (std::size_t at = 0; (at = actions.find(place)) != std::string::npos;)
        actions.replace(at, place.size(), blessProgram);
    std::ofstream(to / "com.corvatel.kestrav.policy") << actions;
}

void addAccount(const std::string& name, uid_t uid, bool admin) {
    const std::string number = std::to_string(uid);
    append("/etc/passwd", name + ":x:" + number + ":" + number + "::/nonexistent:/bin/sh");
    append("/etc/group", name + ":x:" + number + ":");
    // The password is "secret".
    append("/etc/shadow",
           name +
               ":$6$kestrav$/pgzfEUyPCsGGSQDOCy0.zqvkCCeU.3MIv/3mA7GPqbUbnBuiDb/9PgidDcellhiYNWK3bOHxoMY7p22oMIWt1"
               ":19000:0:99999:7:::");
    if (admin) addToGroup("sudo", name);
}

}  // namespace kestrav
