#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <system_error>
#include <vector>

#include "base/UniqueFd.h"
#include "services/disk/emptyDiskCache.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

struct Answer {
    std::string name;
    std::uint16_t hostStatus;
    std::uint8_t status;
    std::vector<unsigned char> sense;
    std::error_code meaning;
};

std::error_code error(std::errc number) {
    return std::make_error_code(number);
}

class DiskAnswers : public testing::TestWithParam<Answer> {};

TEST_P(DiskAnswers, TellWhetherTheBytesWereKept) {
    const Answer& given = GetParam();
    const auto kept = keptBytes({given.hostStatus, given.status, given.sense});
    EXPECT_EQ(kept ? std::error_code() : kept.problem().cause, given.meaning);
}

INSTANTIATE_TEST_SUITE_P(
    Disk, DiskAnswers,
    testing::Values(
        Answer{"Good", 0, 0, {}, {}},
        Answer{"CommandUnknown", 0, 2, {0x70, 0, 0x05, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x20, 0}, {}},
        Answer{"CommandUnknownInDescriptors", 0, 2, {0x72, 0x05, 0x20, 0x00}, {}},
        Answer{"KeptAfterASecondTry", 0, 2, {0x70, 0, 0x01}, {}},
        Answer{"MediumDefect", 0, 2, {0x70, 0, 0x03, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x0c, 0}, error(std::errc::io_error)},
        Answer{"DeferredDefect", 0, 2, {0x71, 0, 0x03}, error(std::errc::io_error)},
        Answer{"DefectInDescriptors", 0, 2, {0x72, 0x03, 0x0c, 0x00}, error(std::errc::io_error)},
        Answer{"WithoutAReason", 0, 2, {}, error(std::errc::io_error)},
        Answer{"WithAReasonInNoKnownForm", 0, 2, {0x05, 0x05, 0x05}, error(std::errc::io_error)},
        Answer{"Busy", 0, 8, {}, error(std::errc::io_error)},
        Answer{"Gone", 1, 0, {}, error(std::errc::no_such_device)},
        Answer{"Late", 3, 0, {}, error(std::errc::timed_out)},
        Answer{"BrokenWire", 7, 0, {}, error(std::errc::io_error)}),
    [](const auto& row) { return row.param.name; });

TEST(DiskCache, IsNoMatterForWhatIsNoScsiDisk) {
    const TemporaryFolder folder;
    const UniqueFd file(::open(folder.file("plain", "x").c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(emptyDiskCache(file.get()));
}

TEST(DiskCache, OfADiskThatIsNotOpenIsAnError) {
    const auto emptied = emptyDiskCache(-1);
    ASSERT_FALSE(emptied);
    EXPECT_EQ(emptied.problem().cause, std::errc::bad_file_descriptor);
}

}  // namespace
}  // namespace kestrav
