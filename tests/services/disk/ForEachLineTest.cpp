#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "services/disk/forEachLine.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> linesOf(const std::string& file, std::size_t most = 1'000'000'000) {
    std::vector<std::string> lines;
    forEachLine(file, [&](std::string_view line) {
        lines.emplace_back(line);
        return lines.size() < most;
    });
    return lines;
}

TEST(ForEachLine, GivesEachLine) {
    const TemporaryFolder folder;
    EXPECT_THAT(linesOf(folder.file("file", "one\n\nthree")), ElementsAre("one", "", "three"));
    EXPECT_THAT(linesOf(folder.file("file", "one\ntwo\n")), ElementsAre("one", "two"));
    EXPECT_THAT(linesOf(folder.file("file", "one\ntwo\nthree\n"), 2), ElementsAre("one", "two"));
}

TEST(ForEachLine, FindsNothingWhereNothingCanBeRead) {
    const TemporaryFolder folder;
    EXPECT_THAT(linesOf(folder.path() / "missing"), IsEmpty());
    EXPECT_THAT(linesOf(folder.path()), IsEmpty());
    const std::string pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(linesOf(pipe), IsEmpty());
}

TEST(ForEachLine, CutsWhatIsTooLong) {
    const TemporaryFolder folder;
    const auto lines = linesOf(folder.file("file", std::string(200'000, 'x') + "\nnext\n"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], std::string(16384, 'x'));
    EXPECT_EQ(lines[1], "next");
}

TEST(ForEachLine, ReadsNoFileForEver) {
    const TemporaryFolder folder;
    const std::string line(1023, 'x');
    std::string text;
    for (int i = 0; i < 20 * 1024; ++i)
        text += line + "\n";
    EXPECT_LE(linesOf(folder.file("file", text)).size(), 16U * 1024);
    forEachLine("/dev/zero", [](std::string_view) { return true; });
}

}  // namespace
}  // namespace kestrav
