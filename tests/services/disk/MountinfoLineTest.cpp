#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/sysmacros.h>

#include "services/disk/MountinfoLine.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kLine =
    "36 35 98:0 /mnt1 /mnt\\0402 rw,noatime shared:7 master:1 propagate_from:3 - ext3 /dev/root rw";

TEST(MountinfoLine, TakesALineApart) {
    const auto mount = MountinfoLine::parse(kLine);
    ASSERT_TRUE(mount);
    EXPECT_EQ(mount->id, 36U);
    EXPECT_EQ(mount->parent, 35U);
    EXPECT_EQ(mount->device, makedev(98, 0));
    EXPECT_EQ(mount->place, "/mnt 2");
    EXPECT_THAT(mount->groups, ElementsAre(7U, 1U));
}

TEST(MountinfoLine, KnowsMountsOfNoGroup) {
    const auto mount = MountinfoLine::parse("1 0 8:1 / / rw - ext4 /dev/sda1 rw shared:9");
    ASSERT_TRUE(mount);
    EXPECT_THAT(mount->groups, IsEmpty()) << "what stands behind the hyphen is the file system's";
}

TEST(MountinfoLine, TakesEscapesForWhatTheyMean) {
    EXPECT_EQ(MountinfoLine::unescaped("a\\040b\\011c\\012d\\134e"), "a b\tc\nd\\e");
    EXPECT_EQ(MountinfoLine::unescaped("\\"), "\\");
    EXPECT_EQ(MountinfoLine::unescaped("\\04"), "\\04");
    EXPECT_EQ(MountinfoLine::unescaped("\\999\\777\\-01"), "\\999\\777\\-01");
}

TEST(MountinfoLine, IsNoneInAnotherForm) {
    for (const std::string line : {"",
                                   " ",
                                   "-",
                                   "36",
                                   "36 35",
                                   "36 35 98:0",
                                   "36 35 98:0 /",
                                   "36 35 98:0 / /mnt",
                                   "36 35 98:0 / /mnt rw",
                                   "36 35 98:0 / /mnt rw shared:1",
                                   "x 35 98:0 / /mnt rw - ext3 a b",
                                   "36 x 98:0 / /mnt rw - ext3 a b",
                                   "-1 35 98:0 / /mnt rw - ext3 a b",
                                   "36 35 98 / /mnt rw - ext3 a b",
                                   "36 35 98:x / /mnt rw - ext3 a b",
                                   "36 35 :0 / /mnt rw - ext3 a b",
                                   "36 35 98:0 / mnt rw - ext3 a b",
                                   "36  35 98:0 / /mnt rw - ext3 a b",
                                   "99999999999999999999999 35 98:0 / /mnt rw - ext3 a b",
                                   "36 35 98:0 / /mnt rw shared:x"}) {
        EXPECT_FALSE(MountinfoLine::parse(line)) << line;
    }
}

TEST(MountinfoLine, SurvivesEveryBeginningAndEveryByte) {
    for (std::size_t length = 0; length <= kLine.size(); ++length)
        MountinfoLine::parse(kLine.substr(0, length));
    for (std::size_t at = 0; at < kLine.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string line = kLine;
            line[at] = static_cast<char>(byte);
            const auto mount = MountinfoLine::parse(line);
            EXPECT_TRUE(!mount || mount->groups.size() <= 2) << line;
        }
    }
}

}  // namespace
}  // namespace kestrav
