#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "services/gate/answerFor.h"
#include "services/gate/readBlocks.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/gate/FakeDisk.h"

namespace kestrav {
namespace {

constexpr std::size_t diskBytes = 512 * 80;

struct ReadRow {
    std::uint64_t first;
    std::uint64_t count;
    std::uint32_t blockSize;

    friend void PrintTo(const ReadRow& row, std::ostream* out) {
        *out << row.count << " from " << row.first << " in blocks of " << row.blockSize;
    }
};

class ReadBlocks : public testing::TestWithParam<ReadRow> {};

TEST_P(ReadBlocks, ReturnsTheBlocksThemselves) {
    const auto& [first, count, blockSize] = GetParam();
    FakeDisk disk(patternOf(diskBytes), blockSize);
    const auto blocks = readBlocks(disk, first, count, "sdb");
    ASSERT_TRUE(blocks) << blocks.problem().sentence;
    EXPECT_EQ(blocks.value(), disk.bytes.substr(first * 512, count * 512));
    EXPECT_FALSE(disk.wasMisused);
}

INSTANTIATE_TEST_SUITE_P(Rows, ReadBlocks,
                         testing::Values(ReadRow{0, 1, 512}, ReadRow{7, 19, 512}, ReadRow{79, 1, 512},
                                         ReadRow{61, 19, 512}, ReadRow{7, 19, 4096}, ReadRow{79, 1, 4096},
                                         ReadRow{0, 19, 8192}));

struct RefusedReadRow {
    std::uint64_t first;
    std::uint64_t count;
    std::string said;

    friend void PrintTo(const RefusedReadRow& row, std::ostream* out) { *out << row.count << " from " << row.first; }
};

class RefusedRead : public testing::TestWithParam<RefusedReadRow> {};

TEST_P(RefusedRead, SaysWhy) {
    FakeDisk disk(patternOf(diskBytes));
    const auto blocks = readBlocks(disk, GetParam().first, GetParam().count, "sdb");
    ASSERT_FALSE(blocks);
    EXPECT_EQ(blocks.problem().kind, Problem::Kind::refused);
    EXPECT_NE(blocks.problem().sentence.find(GetParam().said), std::string::npos) << blocks.problem().sentence;
    EXPECT_FALSE(disk.wasMisused);
}

constexpr std::uint64_t largest = 9223372036854775807U;

INSTANTIATE_TEST_SUITE_P(Rows, RefusedRead,
                         testing::Values(RefusedReadRow{0, 0, "asks for nothing"},
                                         RefusedReadRow{0, 20, "room for 19 blocks, not for 20"},
                                         RefusedReadRow{0, largest, "room for 19 blocks"},
                                         RefusedReadRow{80, 1, "has 80 blocks, which end before block 80 + 1"},
                                         RefusedReadRow{79, 2, "has 80 blocks"},
                                         RefusedReadRow{largest, 19, "has 80 blocks"}));

TEST(ReadBlocksFromABadDisk, SaysWhatTheSystemSaid) {
    FakeDisk disk(patternOf(diskBytes));
    disk.failsReadBackAt = 512;
    const auto blocks = readBlocks(disk, 0, 4, "sdb");
    ASSERT_FALSE(blocks);
    EXPECT_EQ(answerFor(blocks.problem()), "Failed: reading sdb: Input/output error.");
}

}  // namespace
}  // namespace kestrav
