#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/openSystemBus.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/sandbox/standInFor.h"
#include "tests/services/helper/InstallerInARoom.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

/// A pipe by that name which is full and which nobody reads, as long as the result lives.
UniqueFd fullPipe(const char* path) {
    if (::mkfifo(path, 0600) != 0) return {};
    UniqueFd pipe(::open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC));
    const std::string filling(4096, 'x');
    while (::write(pipe.get(), filling.data(), filling.size()) > 0) {
    }
    return pipe;
}

bool endsSoon(const ChildProcess& process) {
    return eventually([&] { return !process.runs(); });
}

class BlessUnread : public Bless, public testing::WithParamInterface<const char*> {};

TEST_P(BlessUnread, EndsAllTheSame) {
    const UniqueFd pipe = fullPipe("/run/full");
    ASSERT_TRUE(pipe);
    ChildProcess run = ChildProcess::start({"/bin/sh", "-c", std::string(kBless) + GetParam() + " >/run/full 2>&1"});
    EXPECT_TRUE(endsSoon(run)) << "waits for somebody to read";
}

INSTANTIATE_TEST_SUITE_P(Words, BlessUnread, testing::Values(" install", " uninstall", " nonsense"),
                         [](const auto& row) { return std::string(row.param + 1); });

/// Has udev seem to run, and a script of the shell stand in for udevadm.
void standInForUdevadm(const std::string& script) {
    fs::create_directory("/run/udev");
    write("/run/udev/control", "");
    ASSERT_TRUE(standInFor("/usr/bin/udevadm", script));
}

TEST_F(Bless, HasUdevReadItsRulesAndLookAtTheAccessoryAgain) {
    standInForUdevadm("echo \"$@\" >>/run/calls\n");
    ASSERT_EQ(bless("install").exitStatus, 0);
    const std::string both =
        "control --reload\n"
        "trigger --subsystem-match=block --property-match=ID_VENDOR_ID=10d6 --property-match=ID_MODEL_ID=fd01\n";
    EXPECT_EQ(contents("/run/calls"), both);
    ASSERT_EQ(bless("install").exitStatus, 0);
    EXPECT_EQ(contents("/run/calls"), both) << "told again although nothing changed";
    ASSERT_EQ(bless("uninstall").exitStatus, 0);
    EXPECT_EQ(contents("/run/calls"), both + both);
}

TEST_F(Bless, FinishesAnInstallationThatTheSystemDidNotTake) {
    standInForUdevadm("[ ! -e /run/broken ]\n");
    write("/run/broken", "");
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, "/usr/bin/udevadm did not take the change. Restart the computer.\n");
    EXPECT_EQ(bless("install").exitStatus, 1) << "passed for finished";
    fs::remove("/run/broken");
    EXPECT_EQ(bless("install").out, "The helper is installed.\n");
    EXPECT_EQ(bless("install").out, "The helper is installed already.\n");
    EXPECT_THAT(leftOver(), IsEmpty());
}

TEST_F(Bless, KeepsWhatUdevadmSaysFromAReaderThatDoesNotRead) {
    const UniqueFd pipe = fullPipe("/run/full");
    ASSERT_TRUE(pipe);
    standInForUdevadm("echo said >&2\necho said\n");
    ChildProcess run = ChildProcess::start({"/bin/sh", "-c", std::string(kBless) + " install >/run/full 2>&1"});
    EXPECT_TRUE(endsSoon(run)) << "udevadm waits for somebody to read";
    EXPECT_EQ(run.wait(), 0);
}

TEST_F(Bless, LearnsOfAChildsEndWhateverItsCallerIgnores) {
    standInForUdevadm("exit 1\n");
    const ProgramRun run = runProgram({"/usr/bin/env", "--ignore-signal=CHLD", kBless, "install"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, "/usr/bin/udevadm did not take the change. Restart the computer.\n");
}

constexpr const char* kStandInIsThere = "/run/stand-in-for-systemd";

int answerReload(sd_bus_message* request, void* takes, sd_bus_error*) {
    std::this_thread::sleep_for(*static_cast<std::chrono::seconds*>(takes));
    return sd_bus_reply_method_return(request, "");
}

/// Stands in for systemd on the bus, which takes its time to read its files anew. Ends with its process.
int standInForSystemd(std::chrono::seconds takes) {
    const auto bus = openSystemBus();
    if (!bus) return 1;
    sd_bus* raw = bus.value().get();
    constexpr sd_bus_vtable kOperations[] = {SD_BUS_VTABLE_START(0),
                                             SD_BUS_METHOD("Reload", "", "", answerReload, SD_BUS_VTABLE_UNPRIVILEGED),
                                             SD_BUS_VTABLE_END};
    if (sd_bus_add_object_vtable(raw, nullptr, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                                 kOperations, &takes) < 0) {
        return 1;
    }
    if (sd_bus_request_name(raw, "org.freedesktop.systemd1", 0) < 0) return 1;
    write(kStandInIsThere, "");
    while (sd_bus_process(raw, nullptr) >= 0 && sd_bus_wait(raw, UINT64_MAX) >= 0) {
    }
    return 1;
}

TEST_F(Bless, WaitsForASlowSystemd) {
    // As a system that was started by systemd.
    fs::create_directories("/run/systemd/system");
    SystemDaemons daemons;
    daemons.startBus();
    const ChildProcess systemd(::fork());
    if (systemd.pid() == 0) ::_exit(standInForSystemd(std::chrono::seconds(26)));
    ASSERT_TRUE(eventually([] { return fs::exists(kStandInIsThere); }));
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(run.out, "The helper is installed.\n");
}

}  // namespace
}  // namespace kestrav
