#include <gtest/gtest.h>
#include <sys/sysmacros.h>
#include <vector>

#include "services/disk/isMappingOf.h"

namespace kestrav {
namespace {

TEST(IsMappingOf, TellsADeviceByItsNumbersInHexadecimal) {
    const std::vector<dev_t> stick{makedev(8, 17)};
    EXPECT_TRUE(isMappingOf("7f00-7f10 r-xp 00000000 08:11 131    /media/me/a program", stick));
    EXPECT_FALSE(isMappingOf("7f00-7f10 r-xp 00000000 08:17 131    /usr/bin/true", stick));
    EXPECT_FALSE(isMappingOf("7f00-7f10 rw-p 00000000 00:00 0      08:11", stick));
}

TEST(IsMappingOf, IsFalseOfWhatIsNoSuchLine) {
    const std::vector<dev_t> none{makedev(0, 0)};
    for (const char* line : {"", " ", "a b c", "a b c ", "a b c 0", "a b c 0:", "a b c :0", "a b c x:y"})
        EXPECT_FALSE(isMappingOf(line, none)) << line;
}

}  // namespace
}  // namespace kestrav
