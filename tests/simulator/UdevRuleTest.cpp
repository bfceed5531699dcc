// The accessory's udev rule, as udev itself reads it, with the accessory plugged in.
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "tests/TemporaryFolder.h"
#include "tests/device/linux/PrivateMounts.h"
#include "tests/places.h"
#include "tests/simulator/ShellRun.h"

namespace kestrav {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string rule = places::ofSource("packaging/udev/60-kestrav.rules");

// udevadm makes the links that it finds, so it is given a /dev and a /run of its own.
bool isolate() {
    if (::mount("none", "/dev", "tmpfs", 0, nullptr) != 0 || ::mount("none", "/run", "tmpfs", 0, nullptr) != 0)
        return false;
    std::error_code error;
    std::filesystem::create_directories("/run/udev/rules.d", error);
    std::filesystem::copy_file(rule, "/run/udev/rules.d/60-kestrav.rules", error);
    return !error && ::mknod("/dev/null", S_IFCHR | 0666, makedev(1, 3)) == 0;
}

class UdevRule : public ::testing::Test {
  protected:
    // What udev says of the block device `name` when it is plugged in.
    std::string saidOf(const std::string& name) {
        const std::string file = folder_.path() / "said";
        const int result = withPrivateMounts([&] {
            if (!isolate()) return 2;
            const ShellRun said(places::ofSource("simulator/with-accessory") + " --others 1 sh -c 'udevadm test " +
                                "$(readlink -f /sys/class/block/" + name + ") 2>&1'");
            std::ofstream(file) << said.output;
            return said.status;
        });
        isolated_ = result != -2;
        EXPECT_TRUE(result == 0 || result == -2) << result;
        std::ostringstream said;
        said << std::ifstream(file).rdbuf();
        return said.str();
    }

    bool isolated_ = false;
    TemporaryFolder folder_;
};

/// Among the names that udevadm tells last. What it says on the way differs from one version to the next.
auto HasTheLink(const std::string& link) {
    return testing::ContainsRegex("\n *DEVLINKS=([^\n]* )?" + link + "[ \n]");
}

TEST_F(UdevRule, GivesTheWholeDiskItsRawName) {
    const std::string said = saidOf("sdzz");
    if (!isolated_) GTEST_SKIP() << "mounting takes root";
    EXPECT_THAT(said, HasSubstr("60-kestrav.rules:5 "));
    EXPECT_THAT(said, HasTheLink("/dev/rsdzz"));
    EXPECT_THAT(said, Not(HasSubstr("60-kestrav.rules:6")));
}

TEST_F(UdevRule, GivesTheFirstPartitionItsName) {
    const std::string said = saidOf("sdzz1");
    if (!isolated_) GTEST_SKIP() << "mounting takes root";
    EXPECT_THAT(said, HasTheLink("/dev/sdzzs1"));
    EXPECT_THAT(said, Not(HasSubstr("60-kestrav.rules:5")));
}

TEST_F(UdevRule, GivesAnotherDiskNothing) {
    const std::string said = saidOf("stick0");
    if (!isolated_) GTEST_SKIP() << "mounting takes root";
    EXPECT_THAT(said, HasSubstr("Reading rules file: /run/udev/rules.d/60-kestrav.rules"));
    EXPECT_THAT(said, Not(HasSubstr("60-kestrav.rules:")));
}

TEST_F(UdevRule, GivesNobodyAccess) {
    std::ifstream file(rule);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        for (const char* key : {"MODE", "OWNER", "GROUP", "TAG", "RUN", "SECLABEL", "uaccess"})
            EXPECT_THAT(line, Not(HasSubstr(key)));
    }
}

}  // namespace
}  // namespace kestrav
