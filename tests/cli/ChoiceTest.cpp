#include <gtest/gtest.h>

#include "tests/cli/Commands.h"

namespace kestrav {
namespace {

using List = Commands;
using Choice = Commands;

/// Three accessories, plugged in in this order.
void plugInThree(FakeRegistry& registry) {
    registry.plugIn({.id = 3,
                     .name = "Third",
                     .disk = "sdd",
                     .serial = "KA3",
                     .port = "1-10",
                     .diskBytes = 1 << 24,
                     .blockNumbers = {16, 17}});
    registry.plugIn({.id = 1, .name = "First", .disk = std::nullopt, .serial = "", .port = "1-2"});
    registry.plugIn({.id = 2,
                     .name = "Second \x1b",
                     .disk = "sdc",
                     .serial = "KA\xff",
                     .port = "1-2.1",
                     .diskBytes = 8053063680,
                     .blockNumbers = {32}});
}

TEST_F(List, ShowsAllAccessoriesInTheOrderOfTheirPorts) {
    plugInThree(on.registry);
    on.volumes.devices = {{17, "/media/me/A\nB"}, {99, "/media/other"}, {17, "/mnt"}};
    EXPECT_EQ(carriedOut(ListInvocation{}), ExitCode::success);
    EXPECT_EQ(out.str(),
              "DISK  SERIAL  PORT   SIZE     NAME         MOUNTED\n"
              "-     -       1-2    -        First        -\n"
              "sdc   KA\uFFFD     1-2.1  7.5 GiB  Second \\x1b  -\n"
              "sdd   KA3     1-10   16 MiB   Third        /media/me/A\\x0aB, /mnt\n");
}

TEST_F(List, PutsTheSameIntoOneJsonObject) {
    plugInThree(on.registry);
    on.volumes.devices = {{16, "/media/me/A"}};
    EXPECT_EQ(carriedOut(ListInvocation{.json = true}), ExitCode::success);
    EXPECT_EQ(
        out.str(),
        R"({"accessories":[{"disk":null,"serial":null,"port":"1-2","bytes":null,"name":"First","id":1,"mounted":[]},)"
        R"({"disk":"sdc","serial":"KA)"
        "\uFFFD"
        R"(","port":"1-2.1","bytes":8053063680,"name":"Second \u001b","id":2,"mounted":[]},)"
        R"({"disk":"sdd","serial":"KA3","port":"1-10","bytes":16777216,"name":"Third","id":3,"mounted":["/media/me/A"]}],)"
        R"("status":0,"problem":null})"
        "\n");
}

TEST_F(List, EndsWithThreeForNoneAndWithFiveWithoutARegistry) {
    EXPECT_EQ(carriedOut(ListInvocation{}), ExitCode::noAccessory);
    EXPECT_TRUE(complained("No accessory (USB 10d6:fd01) is attached."));
    on.registry.breakDown();
    EXPECT_EQ(carriedOut(ListInvocation{.json = true}), ExitCode::registryUnreachable);
    EXPECT_EQ(out.str(),
              R"({"accessories":[],"status":5,"problem":"The device registry can't be reached. Is /sys mounted?"})"
              "\n");
}

TEST_F(Choice, OfASerialNumberAPortOrADiskFindsThatAccessory) {
    plugInThree(on.registry);
    const std::vector<AccessoryChoice> choices{{.disks = {"sdd"}},
                                               {.disks = {"/dev/sdd"}},
                                               {.serials = {"KA3"}},
                                               {.ports = {"1-10"}},
                                               {.disks = {"sdc", "sdd"}, .serials = {"KA3"}}};
    for (const AccessoryChoice& choice : choices) {
        out.str("");
        EXPECT_EQ(carriedOut(DetectInvocation{.accessory = choice}), ExitCode::success);
        EXPECT_EQ(out.str(), "name: Third\ndisk: sdd\nid: 3\n") << choice.inWords();
    }
    EXPECT_EQ(err.str(), "") << "who has chosen needn't be told how to choose";
}

TEST_F(Choice, OfNoneTakesTheLastAndSaysHowToChoose) {
    plugInThree(on.registry);
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::success);
    EXPECT_TRUE(out.str().starts_with("name: Second"));
    EXPECT_EQ(err.str(),
              "kestravctl: 3 accessories are attached; sdc (serial number KA\uFFFD, port 1-2.1) is taken. Choose "
              "another one with --port, --serial or --disk: 'kestravctl list' shows them.\n");
}

TEST_F(Choice, OfOneThatIsNotThereHandsNothingOver) {
    plugInThree(on.registry);
    const AccessoryChoice choice{.serials = {"KA9"}, .ports = {"1-10"}};
    const UpdateInvocation update{.file = made("f", "x"), .accessory = choice};
    EXPECT_EQ(carriedOut(update), ExitCode::failure);
    EXPECT_TRUE(
        complained("No accessory with the serial number KA9, the port 1-10 is attached. "
                   "'kestravctl list' shows those that are.\n"));
    EXPECT_EQ(carriedOut(DetectInvocation{.accessory = choice}), ExitCode::noAccessory);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Choice, ThatLeavesSeveralTakesNone) {
    on.registry.plugIn({.id = 1, .name = "One", .disk = "sdc", .serial = "KA1", .port = "1-1"});
    on.registry.plugIn({.id = 2, .name = "Twin", .disk = "sdd", .serial = "KA1", .port = "1-2"});
    const PushInvocation push{.file = made("f", "x"), .accessory = {.serials = {"KA1"}}};
    EXPECT_EQ(carriedOut(push), ExitCode::failure);
    EXPECT_TRUE(
        complained("2 accessories with the serial number KA1 are attached, and one can be meant. Choose by "
                   "--port: 'kestravctl list' shows the ports.\n"));
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Choice, GoesToTheChosenDisk) {
    plugInThree(on.registry);
    service.setBehaviour(
        answersInTurn("sdd1 was not mounted.", "Wrote 1 bytes to sdd at block 3, verified, 9.9 MB/s."));
    EXPECT_EQ(carriedOut(PushInvocation{3, made("f", "x"), {.json = true}, {.ports = {"1-10"}}}), ExitCode::success);
    ASSERT_EQ(service.requests().size(), 2U);
    EXPECT_NE(service.requests()[1].find("of=/dev/rsdd"), std::string::npos);
    EXPECT_TRUE(out.str().starts_with(R"({"disk":"sdd","serial":"KA3","port":"1-10",)")) << out.str();
}

}  // namespace
}  // namespace kestrav
