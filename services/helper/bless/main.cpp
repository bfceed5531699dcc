#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Outcome.h"
#include "base/openStandardDescriptors.h"
#include "base/writeWithPatience.h"
#include "services/helper/bless/installHelper.h"

namespace {

constexpr const char* kUsage =
    "Usage: kestrav-bless install | uninstall | register-right\n"
    "Installs the helper that updates a Kestrav accessory, takes it away, or registers the right to reach the\n"
    "accessory's disk. Only root can do that; desktop programs ask for it through pkexec.";

/// Whoever started this program also shaped what it inherits; none of it may matter.
void forgetInheritance() {
    ::clearenv();
    ::umask(022);
    ::close_range(3, UINT_MAX, 0);
    if (!kestrav::openStandardDescriptors()) ::_exit(1);
    // A caller that ignores its children's ends makes them unknowable for this program, too.
    std::signal(SIGCHLD, SIG_DFL);
    for (const int number : {SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
    if (::chdir("/") != 0) ::_exit(1);
}

/// Whoever started this program may leave it a pipe that nobody reads; a process of root's must not stay for that.
void say(int descriptor, std::string text) {
    text += '\n';
    kestrav::writeWithPatience(descriptor, text, std::chrono::seconds(2));
}

kestrav::Outcome<std::string> ownFolder() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || length == static_cast<ssize_t>(sizeof path)) {
        return kestrav::failed("The installer can't tell where it stands.");
    }
    const std::string_view text(path, static_cast<std::size_t>(length));
    return std::string(text.substr(0, text.rfind('/')));
}

kestrav::Outcome<std::string> perform(std::string_view operation) {
    if (::geteuid() != 0) return kestrav::refused("Only root can do that: run it through pkexec or sudo.");
    if (operation == "uninstall") return kestrav::uninstallHelper();
    if (operation == "register-right") return kestrav::registerRight();
    const auto folder = ownFolder();
    return folder ? kestrav::installHelper(folder.value()) : folder;
}

}  // namespace

int main(int argc, char* argv[]) {
    forgetInheritance();
    const std::string_view operation = argc == 2 ? argv[1] : "";
    if (operation != "install" && operation != "uninstall" && operation != "register-right") {
        say(STDERR_FILENO, kUsage);
        return 2;
    }
    // One sentence and nothing else: it is shown to the person as it stands.
    try {
        const auto done = perform(operation);
        say(done ? STDOUT_FILENO : STDERR_FILENO, done ? done.value() : done.problem().sentence);
        return done ? 0 : 1;
    } catch (const std::exception& error) {
        // No memory, for one thing. Caught, so that no temporary file stays behind.
        say(STDERR_FILENO, error.what());
        return 1;
    }
}
