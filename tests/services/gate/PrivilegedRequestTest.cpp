#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "services/gate/PrivilegedRequest.h"

namespace kestrav {
namespace {

using Arguments = std::vector<std::string>;

TEST(ParseCommandLine, TakesAnUnmount) {
    const auto request = parsePrivilegedRequest("umount", Arguments{"/dev/sdbs1"});
    ASSERT_TRUE(request);
    const auto& unmount = std::get<UnmountRequest>(request.value());
    EXPECT_EQ(unmount.diskName, "sdb");
    EXPECT_EQ(unmount.node, "/dev/sdbs1");
}

TEST(ParseCommandLine, TakesAWrite) {
    const auto request = parsePrivilegedRequest("dd", Arguments{"if=/a b=c", "of=/dev/rsdb", "seek=1536", "bs=512"});
    ASSERT_TRUE(request);
    const auto& write = std::get<WriteRequest>(request.value());
    EXPECT_EQ(write.imagePath, "/a b=c");
    EXPECT_EQ(write.diskName, "sdb");
    EXPECT_EQ(write.node, "/dev/rsdb");
    EXPECT_EQ(write.firstBlock, 1536U);
}

TEST(ParseCommandLine, TakesARead) {
    const auto request = parsePrivilegedRequest("dd", Arguments{"if=/dev/rsdb", "skip=0", "count=9223372036854775807"});
    ASSERT_TRUE(request);
    const auto& read = std::get<ReadRequest>(request.value());
    EXPECT_EQ(read.diskName, "sdb");
    EXPECT_EQ(read.node, "/dev/rsdb");
    EXPECT_EQ(read.firstBlock, 0U);
    EXPECT_EQ(read.count, 9223372036854775807U);
}

TEST(PrivilegedRequests, NameADiskByAsManyLettersAsTheKernelHas) {
    const std::string longest(32, 's');
    EXPECT_TRUE(parsePrivilegedRequest("umount", Arguments{"/dev/" + longest + "s1"}));
    EXPECT_FALSE(parsePrivilegedRequest("umount", Arguments{"/dev/" + longest + "ss1"}));
}

struct RefusedRow {
    std::string name;
    std::string command;
    Arguments arguments;
    std::string said;  // a part of the sentence

    friend void PrintTo(const RefusedRow& row, std::ostream* out) { *out << row.name; }
};

class RefusedCommandLine : public testing::TestWithParam<RefusedRow> {};

TEST_P(RefusedCommandLine, SaysWhy) {
    const auto request = parsePrivilegedRequest(GetParam().command, GetParam().arguments);
    ASSERT_FALSE(request);
    EXPECT_EQ(request.problem().kind, Problem::Kind::refused);
    EXPECT_NE(request.problem().sentence.find(GetParam().said), std::string::npos) << request.problem().sentence;
}

RefusedRow write(std::string name, std::size_t index, std::string argument, std::string said) {
    Arguments arguments{"if=/image", "of=/dev/rsdb", "seek=1536", "bs=512"};
    arguments[index] = std::move(argument);
    return {std::move(name), "dd", std::move(arguments), std::move(said)};
}

RefusedRow read(std::string name, std::size_t index, std::string argument, std::string said) {
    Arguments arguments{"if=/dev/rsdb", "skip=1536", "count=1"};
    arguments[index] = std::move(argument);
    return {std::move(name), "dd", std::move(arguments), std::move(said)};
}

RefusedRow unmount(std::string name, std::string node) {
    return {std::move(name), "umount", {std::move(node)}, "does not name a first partition"};
}

const std::string zero = std::string("a") + '\0' + "b";

INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedCommandLine,
    testing::Values(
        RefusedRow{"AnotherCommand", "rm", {"-rf", "/"}, "\"rm\" is not a command"},
        RefusedRow{"CommandWithPath", "/bin/dd", {}, "not a command"},
        RefusedRow{"EmptyCommand", "", {}, "not a command"}, RefusedRow{"UpperCase", "DD", {}, "not a command"},
        RefusedRow{"UnmountOfNothing", "umount", {}, "one argument"},
        RefusedRow{"UnmountOption", "umount", {"-a", "/dev/sdbs1"}, "one argument"}, unmount("UnmountOfAll", "-a"),
        unmount("UnmountOfPlace", "/"), unmount("UnmountOfKernelNode", "/dev/sdb1"),
        unmount("UnmountOfSecondPartition", "/dev/sdbs2"), unmount("UnmountWithoutDisk", "/dev/s1"),
        unmount("UnmountOutside", "/dev/../etc/s1"), unmount("UnmountBelow", "/dev/disk/s1"),
        unmount("UnmountWithZero", "/dev/sd" + zero + "s1"), unmount("UnmountWithPercent", "/dev/%ns1"),
        unmount("UnmountOfLongName", "/dev/" + std::string(33, 'a') + "s1"),
        RefusedRow{"DdOfNothing", "dd", {}, "in this order"},
        RefusedRow{"DdWithoutBlockSize", "dd", {"if=/image", "of=/dev/rsdb"}, "in this order"},
        RefusedRow{
            "DdWithMore", "dd", {"if=/image", "of=/dev/rsdb", "seek=1536", "bs=512", "conv=notrunc"}, "in this order"},
        RefusedRow{"DdInOtherOrder", "dd", {"of=/dev/rsdb", "if=/image", "seek=1536", "bs=512"}, "expected if=FILE"},
        write("RelativeImage", 0, "if=image", "does not begin with /"),
        write("EmptyImage", 0, "if=", "does not begin with /"), write("ImageWithZero", 0, "if=/" + zero, "zero byte"),
        write("LongImage", 0, "if=/" + std::string(4095, 'a'), "longer than a path"),
        write("KernelDiskNode", 1, "of=/dev/sdb", "does not name a whole disk"),
        write("FileAsDisk", 1, "of=/etc/passwd", "does not name a whole disk"),
        write("DiskOutside", 1, "of=/dev/r../x", "does not name a whole disk"),
        write("DiskBelow", 1, "of=/dev/raw/raw1", "does not name a whole disk"),
        write("NoDiskName", 1, "of=/dev/r", "does not name a whole disk"),
        write("DiskWithZero", 1, "of=/dev/rsd" + zero, "does not name a whole disk"),
        write("NegativeBlock", 2, "seek=-1", "seek=-1 is negative"), write("NegativeZero", 2, "seek=-0", "is negative"),
        write("NoNumber", 2, "seek=", "not a decimal number"), write("PlusSign", 2, "seek=+1", "not a decimal number"),
        write("Hexadecimal", 2, "seek=0x600", "not a decimal number"),
        write("Octal", 2, "seek=01536", "not a decimal number"), write("Suffix", 2, "seek=1k", "not a decimal number"),
        write("Blank", 2, "seek= 1", "not a decimal number"),
        write("ZeroByteInNumber", 2, std::string("seek=1\0", 7), "not a decimal number"),
        write("TooLarge", 2, "seek=9223372036854775808", "larger than any block"),
        write("MuchTooLarge", 2, "seek=" + std::string(3000, '9'), "larger than any block"),
        write("SkipInsteadOfSeek", 2, "skip=1536", "expected seek=NUMBER"),
        write("OtherBlockSize", 3, "bs=4096", "expected bs=512"), write("NoBlockSize", 3, "", "expected bs=512"),
        read("FileAsSource", 0, "if=/etc/shadow", "does not name a whole disk"),
        read("ReadNegativeBlock", 1, "skip=-9223372036854775808", "is negative"),
        read("ReadNegativeCount", 2, "count=-1", "count=-1 is negative"),
        read("ReadHugeCount", 2, "count=18446744073709551616", "larger than any block"),
        read("OutputInsteadOfCount", 2, "of=/etc/passwd", "expected count=NUMBER")),
    [](const auto& row) { return row.param.name; });

TEST(RefusedCommandLines, AreNotEchoedAtFullLength) {
    const auto request = parsePrivilegedRequest(std::string(60'000, 'x'), {});
    ASSERT_FALSE(request);
    EXPECT_LT(request.problem().sentence.size(), 500U);
}

}  // namespace
}  // namespace kestrav
