#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/device/fakes/EngineOnFakes.h"

namespace kestrav {
namespace {

using ::testing::IsEmpty;

TEST(Detect, KeepsWhatItFound) {
    EngineOnFakes on;
    on.plugIn("disk2");
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device, (DeviceObject{.id = 0x10002, .name = "Accessory", .bsdName = "disk2"}));
    EXPECT_THAT(on.lines(), IsEmpty());
    EXPECT_EQ(on.console.str(), "");
}

TEST(Detect, ShortensTheName) {
    EngineOnFakes on;
    on.registry.plugIn({.id = 1, .name = std::string(200, 'n'), .disk = "disk2"});
    on.engine.detect(4310, 64769);
    EXPECT_EQ(on.engine.device.name, std::string(127, 'n'));
}

TEST(Detect, LetsTheLastOfTwoDevicesWin) {
    EngineOnFakes on;
    on.registry.plugIn({.id = 1, .name = "first", .disk = "disk2"});
    on.registry.plugIn({.id = 2, .name = "second", .disk = std::nullopt});
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device, (DeviceObject{.id = 2, .name = "second", .bsdName = "nil"}));
}

TEST(Detect, PassesOverADeviceWithoutAName) {
    EngineOnFakes on;
    on.plugIn("disk2");
    on.registry.plugIn({.id = 2, .name = "", .disk = "disk3"});
    on.registry.plugIn({.id = 3, .name = std::string(1, '\0') + "name", .disk = "disk4"});
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device.bsdName, "disk2");
}

TEST(Detect, GoesOnBehindADeviceWithoutAName) {
    EngineOnFakes on;
    on.registry.plugIn({.id = 2, .name = "", .disk = "disk3"});
    on.plugIn("disk2");
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device.bsdName, "disk2");
}

TEST(Detect, KeepsTheStaleRecordWhenNothingMatches) {
    EngineOnFakes on;
    on.plugIn("disk2");
    on.engine.detect(4310, 64769);
    const DeviceObject found = on.engine.device;
    on.registry.unplugAll();
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device, found);
}

TEST(Detect, ForgetsThePreviousDeviceWhollyOnAMatch) {
    EngineOnFakes on;
    on.engine.device = {.id = 9, .name = "old", .interface = nullptr, .locationID = 77, .bsdName = "disk9"};
    on.plugIn("disk2");
    on.engine.detect(4310, 64769);
    EXPECT_EQ(on.engine.device.locationID, 0U);
}

TEST(Detect, AsksForWhatItIsGiven) {
    EngineOnFakes on;
    on.plugIn("disk2");
    on.registry.plugIn({.id = 5, .name = "other", .disk = "disk5"}, 1, 2);
    EXPECT_EQ(on.engine.detect(1, 2), 0);
    EXPECT_EQ(on.engine.device.bsdName, "disk5");
}

TEST(Detect, IsMadeWithTheIdentifiersThatWereSet) {
    EngineOnFakes on;
    on.plugIn("disk2");
    on.registry.plugIn({.id = 5, .name = "other", .disk = "disk5"}, 1, 2);
    on.engine.setVendorID(1);
    on.engine.setProductID(2);
    on.engine.readDevice(0, 1);
    EXPECT_EQ(on.engine.device.bsdName, "disk5");
}

struct DiskRow {
    const char* title;
    std::optional<std::string> disk;
    std::string bsdName;
};

void PrintTo(const DiskRow& row, std::ostream* out) {
    *out << row.title;
}

class DiskName : public ::testing::TestWithParam<DiskRow> {};

TEST_P(DiskName, IsTakenOutOfItsDescription) {
    EngineOnFakes on;
    on.plugIn(GetParam().disk);
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device.bsdName, GetParam().bsdName);
}

INSTANTIATE_TEST_SUITE_P(Rows, DiskName,
                         ::testing::Values(DiskRow{"Plain", "disk3", "disk3"}, DiskRow{"None", std::nullopt, "nil"},
                                           DiskRow{"Empty", "", ""}, DiskRow{"ClosingBracket", "disk)3)", "disk3"},
                                           DiskRow{"OpeningBracketStays", "disk(3", "disk(3"},
                                           DiskRow{"TheDescriptionsOwnWord", "Optional(disk3)", "disk3"},
                                           DiskRow{"TheWordInTheMiddle", "diOptional(sk3", "disk3"},
                                           // Taken out once, from front to back: what comes together by that stays.
                                           DiskRow{"TheWordInsideTheWord", "OptOptional(ional(x", "Optional(x"},
                                           // A bracket that parts the word keeps it: brackets go last.
                                           DiskRow{"ABracketInTheWord", "Optional)(x", "Optional(x"},
                                           DiskRow{"SeveralWords", "Optional(aOptional(Optional(b))", "ab"}),
                         [](const auto& row) { return row.param.title; });

struct OutOfReachRow {
    const char* title;
    RegistryAnswer answer;
    std::string console;
};

void PrintTo(const OutOfReachRow& row, std::ostream* out) {
    *out << row.title;
}

class DetectOutOfReach : public ::testing::TestWithParam<OutOfReachRow> {};

TEST_P(DetectOutOfReach, SaysSoOnTheConsoleAndKeepsTheRecord) {
    EngineOnFakes on;
    on.plugIn("disk2");
    on.engine.detect(4310, 64769);
    const DeviceObject found = on.engine.device;
    on.registry.answerWith(GetParam().answer);
    EXPECT_EQ(on.engine.detect(4310, 64769), 5);
    EXPECT_EQ(on.engine.device, found);
    EXPECT_EQ(on.console.str(), GetParam().console);
    EXPECT_THAT(on.lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DetectOutOfReach,
    ::testing::Values(
        OutOfReachRow{"Status5", {5, std::nullopt}, "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n 5\n"},
        OutOfReachRow{"AStatusOutweighsAList",
                      {17, std::vector<UsbDevice>{{.id = 3, .name = "n", .disk = "disk7"}}},
                      "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n 17\n"},
        OutOfReachRow{
            "NoListWithoutAStatus", {0, std::nullopt}, "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n 0\n"},
        OutOfReachRow{
            "NegativeStatus", {-2, std::nullopt}, "ERR: Couldn\u2019t create a master I/O Kit port(%08x)\n -2\n"}),
    [](const auto& row) { return row.param.title; });

TEST(Detect, TakesAListInSpiteOfANegativeStatus) {
    EngineOnFakes on;
    on.registry.answerWith({-2, std::vector<UsbDevice>{{.id = 3, .name = "n", .disk = "disk7"}}});
    EXPECT_EQ(on.engine.detect(4310, 64769), 0);
    EXPECT_EQ(on.engine.device.bsdName, "disk7");
}

struct DrivesRow {
    const char* title;
    std::optional<std::vector<std::string>> mounted;
    std::vector<std::string> drives;
};

void PrintTo(const DrivesRow& row, std::ostream* out) {
    *out << row.title;
}

class Drives : public ::testing::TestWithParam<DrivesRow> {};

TEST_P(Drives, AreWhatIsMountedInTheVolumesFolders) {
    EngineOnFakes on;
    on.volumes.mounted = GetParam().mounted;
    EXPECT_EQ(on.engine.getDrives(), GetParam().drives);
    std::vector<std::string> lines;
    for (const std::string& drive : GetParam().drives)
        lines.push_back("Found drive: " + drive);
    EXPECT_EQ(on.lines(), lines);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Drives,
    ::testing::Values(DrivesRow{"NothingIsSaid", std::nullopt, {}},
                      DrivesRow{"NothingIsMounted", std::vector<std::string>{}, {}},
                      DrivesRow{"TheRootIsNone", std::vector<std::string>{"/"}, {}},
                      DrivesRow{
                          "ElsewhereIsNone", std::vector<std::string>{"/private/var/vm", "/mnt/x", "/run/user"}, {}},
                      DrivesRow{"TheFolderItself", std::vector<std::string>{"/media"}, {"/media"}},
                      DrivesRow{"TheOtherFolderItself", std::vector<std::string>{"/run/media"}, {"/run/media"}},
                      DrivesRow{"AVolume", std::vector<std::string>{"/media/A"}, {"/media/A"}},
                      DrivesRow{"AUsersVolume",
                                std::vector<std::string>{"/run/media/u/A b", "/media/u/B"},
                                {"/run/media/u/A b", "/media/u/B"}},
                      DrivesRow{"InTheSystemsOrder",
                                std::vector<std::string>{"/media/z", "/proc", "/media/a", "/run/media/u/m"},
                                {"/media/z", "/media/a", "/run/media/u/m"}},
                      DrivesRow{"WholeComponentsOnly", std::vector<std::string>{"/mediawiki", "/run/mediax/a"}, {}},
                      DrivesRow{"ElsewhereInAPath", std::vector<std::string>{"/other/media/A"}, {}},
                      DrivesRow{"FromTheRootOnly", std::vector<std::string>{"/srv/media/A", "media/A"}, {}}),
    [](const auto& row) { return row.param.title; });

}  // namespace
}  // namespace kestrav
