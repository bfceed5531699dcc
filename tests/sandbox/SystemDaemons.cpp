#include "tests/sandbox/SystemDaemons.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <sys/stat.h>
#include <vector>

#include "tests/eventually.h"
#include "tests/places.h"
#include "tests/sandbox/runProgram.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
constexpr const char* kSocket = "/run/dbus/system_bus_socket";

void waitUntil(const char* what, const std::function<bool()>& holds) {
    if (eventually(holds)) return;
    throw std::runtime_error(std::string("waited in vain for ") + what);
}

/// The daemon gives everyone the right to connect as the last step, a moment after it has begun to listen: until then
/// root alone gets through.
bool busIsOpenToAll() {
    struct stat status {};
    return ::stat(kSocket, &status) == 0 && (status.st_mode & S_IWOTH) != 0;
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

void runScript(const std::string& name, std::vector<std::string> words) {
    words.insert(words.begin(), places::ofSource("tests/sandbox/" + name));
    const ProgramRun run = runProgram(words);
    if (run.exitStatus != 0) throw std::runtime_error(name + ": " + run.err);
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
    waitUntil("the bus", busIsOpenToAll);
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
    runScript("add-actions", {blessProgram});
}

void addAccount(const std::string& name, uid_t uid, bool admin) {
    std::vector<std::string> words{name, std::to_string(uid)};
    if (admin) words.emplace_back("admin");
    runScript("add-account", words);
}

}  // namespace kestrav
