#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

#include "tests/TemporaryFolder.h"
#include "tests/places.h"
#include "tests/sandbox/runProgram.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

const fs::path kPackaging = places::ofSource("packaging");

/// A unit as it is installed, its programs where this build has them.
std::string unitText(const std::string& name) {
    std::string text = contentsOf(kPackaging / "systemd" / name);
    const auto replace = [&text](const std::string& from, const std::string& to) {
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
    };
    replace("@KESTRAV_LIBEXEC@/kestrav-commandd", places::ofProgram("kestrav-commandd"));
    replace("/usr/local/libexec/com.corvatel.KestravHelper", places::ofProgram("kestrav-helper"));
    return text;
}

std::set<std::string> keysOf(const std::string& unit) {
    std::set<std::string> keys;
    std::istringstream lines(unit);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#' || line[0] == '[') continue;
        keys.insert(line.substr(0, line.find('=')));
    }
    return keys;
}

class UnitFiles : public testing::TestWithParam<const char*> {};

TEST_P(UnitFiles, GiveTheServiceNoMountNamespaceOfItsOwn) {
    // systemd.exec(5): each of these makes the service see mounts of its own, and unmount only there.
    // PrivateNetwork, ProtectClock and ProtectHostname don't.
    const std::set<std::string> forbidden{"BindPaths",
                                          "BindReadOnlyPaths",
                                          "DynamicUser",
                                          "ExecPaths",
                                          "ExtensionImages",
                                          "ExtensionDirectories",
                                          "InaccessiblePaths",
                                          "LoadCredential",
                                          "LoadCredentialEncrypted",
                                          "LogNamespace",
                                          "MountAPIVFS",
                                          "MountFlags",
                                          "MountImages",
                                          "NetworkNamespacePath",
                                          "NoExecPaths",
                                          "PrivateDevices",
                                          "PrivateIPC",
                                          "PrivateMounts",
                                          "PrivateTmp",
                                          "PrivateUsers",
                                          "ProcSubset",
                                          "ProtectControlGroups",
                                          "ProtectHome",
                                          "ProtectKernelLogs",
                                          "ProtectKernelModules",
                                          "ProtectKernelTunables",
                                          "ProtectProc",
                                          "ProtectSystem",
                                          "ReadOnlyPaths",
                                          "ReadWritePaths",
                                          "RootDirectory",
                                          "RootImage",
                                          "SetCredential",
                                          "SetCredentialEncrypted",
                                          "TemporaryFileSystem"};
    const auto keys = keysOf(unitText(GetParam()));
    ASSERT_TRUE(keys.contains("ExecStart"));
    for (const std::string& key : keys)
        EXPECT_FALSE(forbidden.contains(key)) << key;
}

TEST_P(UnitFiles, KeepWhatHardensWithoutOne) {
    const auto keys = keysOf(unitText(GetParam()));
    for (const char* key : {"NoNewPrivileges", "CapabilityBoundingSet", "SystemCallFilter", "RestrictAddressFamilies",
                            "MemoryDenyWriteExecute", "RestrictNamespaces", "IPAddressDeny"}) {
        EXPECT_TRUE(keys.contains(key)) << key;
    }
}

TEST_P(UnitFiles, ExposeNoMoreThanTheyHaveTo) {
    const TemporaryFolder folder;
    const bool isHelper = std::string(GetParam()).starts_with("com");
    const std::string path = folder.file("exposed.service", unitText(GetParam()));
    const ProgramRun run = runProgram({"/usr/bin/systemd-analyze", "security", "--offline=yes", "--no-pager",
                                       std::string("--threshold=") + (isHelper ? "40" : "43"), path},
                                      {.uid = 0, .environment = {"PATH=/usr/bin:/bin"}, .input = {}});
    EXPECT_EQ(run.exitStatus, 0) << run.out << run.err;
    EXPECT_THAT(run.out, testing::HasSubstr("Overall exposure level for exposed.service"));
}

TEST_P(UnitFiles, LeaveRoomForAllRequestsThatTheServiceTakes) {
    const std::string unit = unitText(GetParam());
    const std::size_t at = unit.find("\nTasksMax=");
    ASSERT_NE(at, std::string::npos);
    // The service takes 64 at once; each has a process of its own, and that one another to read its image.
    EXPECT_GE(std::stoi(unit.substr(at + std::string("\nTasksMax=").size())), 1 + 64 * 2);
}

TEST_P(UnitFiles, KeepOneBoardThatOutlivesEachService) {
    const std::string unit = unitText(GetParam());
    for (const char* line :
         {"\nRuntimeDirectory=kestrav\n", "\nRuntimeDirectoryMode=0755\n", "\nRuntimeDirectoryPreserve=yes\n"}) {
        EXPECT_NE(unit.find(line), std::string::npos) << line;
    }
}

TEST_P(UnitFiles, AreUnderstoodBySystemd) {
    const TemporaryFolder folder;
    std::string name = GetParam();
    if (name.ends_with(".in")) name.resize(name.size() - 3);
    const std::string path = folder.file(name, unitText(GetParam()));
    folder.file("kestrav-commandd.socket", contentsOf(kPackaging / "systemd" / "kestrav-commandd.socket"));
    const ProgramRun run = runProgram({"/usr/bin/systemd-analyze", "verify", "--man=no", path},
                                      {.uid = 0, .environment = {"PATH=/usr/bin:/bin"}, .input = {}});
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(run.err, "");
}

INSTANTIATE_TEST_SUITE_P(Services, UnitFiles,
                         testing::Values("com.corvatel.KestravHelper.service", "kestrav-commandd.service.in"),
                         [](const auto& row) {
                             return std::string(row.param).starts_with("com") ? std::string("Helper")
                                                                              : std::string("Commandd");
                         });

TEST(CommanddSocket, ListensOnLoopbackAlone) {
    const std::string text = contentsOf(kPackaging / "systemd" / "kestrav-commandd.socket");
    EXPECT_THAT(text, testing::HasSubstr("\nListenStream=127.0.0.1:9090\n"));
    EXPECT_EQ(text.find("Listen"), text.rfind("Listen"));
}

}  // namespace
}  // namespace kestrav
