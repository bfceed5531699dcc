#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "device/linux/MountinfoVolumes.h"
#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/linux/PrivateMounts.h"

namespace kestrav {
namespace {

using Paths = std::vector<std::string>;

bool mountAt(const std::string& path) {
    return (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) &&
           ::mount("none", path.c_str(), "tmpfs", 0, nullptr) == 0;
}

// The folders are made as needed, so the first of the paths has to be one that every machine has: what is made below
// it is then in memory, and no folder is left on the machine.
bool mountAll(const Paths& paths) {
    return std::all_of(paths.begin(), paths.end(), mountAt);
}

TEST(MountinfoVolumes, ListTheRoot) {
    const std::optional<Paths> paths = MountinfoVolumes().mountPoints();
    ASSERT_TRUE(paths);
    EXPECT_THAT(*paths, ::testing::Contains("/"));
}

TEST(MountinfoVolumes, ListWhatIsMountedOldestFirst) {
    const Paths paths{"/media", "/media/z", "/media/a"};
    const int result = withPrivateMounts([&paths] {
        if (!mountAll(paths)) return 2;
        const Paths all = MountinfoVolumes().mountPoints().value_or(Paths());
        return all.size() >= paths.size() && std::equal(paths.rbegin(), paths.rend(), all.rbegin()) ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST(MountinfoVolumes, TellTheNumberOfTheDeviceThatIsMounted) {
    const int result = withPrivateMounts([] {
        if (!mountAll({"/media", "/media/one", "/media/other"})) return 2;
        struct stat other {};
        if (::stat("/media/other", &other) != 0) return 3;
        std::vector<std::string> found;
        for (const MountedDevice& device : MountinfoVolumes().mountedDevices())
            if (device.number == other.st_dev) found.push_back(device.path);
        return found == std::vector<std::string>{"/media/other"} ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST(MountinfoVolumes, ListPathsAsTheyAreWritten) {
    const Paths paths{"/media",        "/media/a b", "/media/tab\there", "/media/line\nend", "/media/back\\slash\\040",
                      "/media/#\u00e9"};
    const int result = withPrivateMounts([&paths] {
        if (!mountAll(paths)) return 2;
        const Paths all = MountinfoVolumes().mountPoints().value_or(Paths());
        return all.size() >= paths.size() && std::equal(paths.rbegin(), paths.rend(), all.rbegin()) ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST(MountinfoVolumes, GiveTheEngineItsDrives) {
    const int result = withPrivateMounts([] {
        if (!mountAll({"/media", "/media/user", "/mnt", "/run", "/run/media"})) return 2;
        if (!mountAll({"/run/media/user", "/run/media/user/DISK"})) return 3;
        EngineOnFakes on;
        MountinfoVolumes volumes;
        KestravDevice engine(on.registry, volumes, on.disks, on.commands, on.console);
        Paths drives = engine.getDrives();
        const Paths expected{"/media", "/media/user", "/run/media", "/run/media/user", "/run/media/user/DISK"};
        // The machine may have drives of its own, mounted before.
        if (drives.size() > expected.size())
            drives.erase(drives.begin(), drives.end() - static_cast<std::ptrdiff_t>(expected.size()));
        return drives == expected ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST(MountinfoVolumes, SayNothingWhereTheKernelDoesNot) {
    const int result = withPrivateMounts([] {
        if (::mount("none", "/proc", "tmpfs", 0, nullptr) != 0) return 2;
        return MountinfoVolumes().mountPoints() ? 1 : 0;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST(MountinfoVolumes, TakeTheDesktopsFoldersForTheVolumesFolder) {
    EXPECT_THAT(MountinfoVolumes().volumesFolders(), ::testing::ElementsAre("/media", "/run/media"));
}

}  // namespace
}  // namespace kestrav
