#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device/DiskNodes.h"
#include "device/KestravDevice.h"
#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/fakes/bytes.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;

std::string written(const std::optional<Uuid>& uuid) {
    std::string text;
    std::array<char, 4> digits{};
    for (const std::uint8_t value : uuid.value_or(Uuid{})) {
        std::snprintf(digits.data(), digits.size(), "%02X", value);
        text += digits.data();
    }
    for (const std::size_t at : {8U, 13U, 18U, 23U})
        text.insert(at, "-");
    return text;
}

TEST(KestravDevice, StartsWithTheAccessorysIdentifiersAndNoDevice) {
    EngineOnFakes on;
    const KestravDevice fresh(on.registry, on.volumes, on.disks, on.commands, on.console);
    EXPECT_EQ(fresh.vendorID(), 4310);
    EXPECT_EQ(fresh.productID(), 64769);
    EXPECT_EQ(fresh.gRawAddedIter(), 0U);
    EXPECT_EQ(fresh.gRawRemovedIter(), 0U);
    EXPECT_EQ(fresh.device.id, 0U);
    EXPECT_EQ(fresh.device.name, "");
    EXPECT_EQ(fresh.device.interface, nullptr);
    EXPECT_EQ(fresh.device.locationID, 0U);
    EXPECT_EQ(fresh.device.bsdName, "");
    EXPECT_EQ(fresh.parent(), nullptr);
    EXPECT_FALSE(fresh.active());
}

TEST(KestravDevice, CarriesThePublishedPlugInIdentifiers) {
    const EngineOnFakes on;
    EXPECT_EQ(written(on.engine.kIOUSBDeviceUserClientTypeID()), "9DC7B780-9EC0-11D4-A54F-000A27052861");
    EXPECT_EQ(written(on.engine.kIOUSBDeviceInterfaceID()), "5C8187D0-9EF3-11D4-8B45-000A27052861");
    EXPECT_EQ(written(on.engine.kIOCFPlugInInterfaceID()), "C244E858-109C-11D4-91D4-0050E4C6426F");
}

TEST(KestravDevice, KeepsWhatItsSettersAreGiven) {
    EngineOnFakes on;
    on.engine.setVendorID(-1);
    on.engine.setProductID(INT64_MAX);
    on.engine.setGRawAddedIter(7);
    on.engine.setGRawRemovedIter(UINT32_MAX);
    on.engine.setActive(true);
    EXPECT_EQ(on.engine.vendorID(), -1);
    EXPECT_EQ(on.engine.productID(), INT64_MAX);
    EXPECT_EQ(on.engine.gRawAddedIter(), 7U);
    EXPECT_EQ(on.engine.gRawRemovedIter(), UINT32_MAX);
    EXPECT_TRUE(on.engine.active());
}

TEST(KestravDevice, KeepsItsParentAlive) {
    EngineOnFakes on;
    auto parent = std::make_shared<LogLines>();
    const std::weak_ptr<LogLines> watched = parent;
    on.engine.setParent(std::move(parent));
    EXPECT_FALSE(watched.expired());
    on.engine.setParent(nullptr);
    EXPECT_TRUE(watched.expired());
}

TEST(KestravDevice, DropsLinesWithoutAParent) {
    EngineOnFakes on;
    on.engine.setParent(nullptr);
    EXPECT_FALSE(on.engine.pushDevice(0, "image"));
    EXPECT_THAT(on.lines(), ElementsAre());
}

TEST(KestravDevice, HandsARespToTheSystemLog) {
    EngineOnFakes on;
    on.engine.runResponderWithResp(std::nullopt);
    on.engine.runResponderWithResp("done");
    EXPECT_THAT(on.systemLog.entries(), ElementsAre("Response: nil", "Response: Optional(\"done\")"));
}

TEST(DiskNodes, AreFormedByPlainConcatenation) {
    const DiskNodes nodes("disk2");
    EXPECT_EQ(nodes.rawDisk, "/dev/rdisk2");
    EXPECT_EQ(nodes.blockDisk, "/dev/disk2");
    EXPECT_EQ(nodes.firstPartition, "/dev/disk2s1");
    EXPECT_EQ(DiskNodes("../x y").firstPartition, "/dev/../x ys1");
}

TEST(ByteToString, TakesItsThirdArgumentForAnEnd) {
    const EngineOnFakes on;
    EXPECT_EQ(on.engine.byteToString(bytes("ABCDEF"), 2, 5), "CDE");
}

TEST(ByteToString, TurnsEveryByteIntoTheCharacterOfItsValue) {
    const EngineOnFakes on;
    const std::vector<std::byte> buffer = bytes({"\0\x7f\x80\xa9\xff", 5});
    EXPECT_EQ(on.engine.byteToString(buffer, 0, 5), std::string("\0\x7f\u0080\u00a9\u00ff", 8));
}

TEST(ByteToString, GivesTheEmptyTextWhereStartAndEndMeet) {
    const EngineOnFakes on;
    for (const std::int64_t at : {std::int64_t{0}, std::int64_t{2}, std::int64_t{3}, std::int64_t{9}, std::int64_t{-4}})
        EXPECT_EQ(on.engine.byteToString(bytes("ABC"), at, at), "") << at;
}

class ByteToStringOutside : public ::testing::TestWithParam<std::pair<std::int64_t, std::int64_t>> {};

TEST_P(ByteToStringOutside, StopsTheProcess) {
    const EngineOnFakes on;
    const auto [start, end] = GetParam();
    EXPECT_EXIT(on.engine.byteToString(bytes("ABCDEF"), start, end), ::testing::KilledBySignal(SIGABRT), "");
}

INSTANTIATE_TEST_SUITE_P(Rows, ByteToStringOutside,
                         ::testing::Values(std::pair{5, 2}, std::pair{0, 7}, std::pair{-1, 3}, std::pair{6, 7},
                                           std::pair{INT64_MAX, INT64_MIN}, std::pair{INT64_MIN, INT64_MAX}));

}  // namespace
}  // namespace kestrav
