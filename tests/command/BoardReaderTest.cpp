#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "command/BoardReader.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

const std::string kWriting =
    R"({"version":1,"disk":"sdb","user":1000,"asker":4711,"writer":4712,"writerStart":98765,"firstBlock":1536,)"
    R"("bytes":200000,"phase":"writing","done":1000,"of":200000,"begun":1700000000})"
    "\n";

std::string with(const std::string& from, const std::string& to) {
    std::string text = kWriting;
    return text.replace(text.find(from), from.size(), to);
}

std::string startOfThis() {
    std::string line = contentsOf("/proc/self/stat");
    std::size_t at = line.rfind(')');
    for (int field = 2; field < 22; ++field)
        at = line.find(' ', at + 1);
    return line.substr(at + 1, line.find(' ', at + 1) - at - 1);
}

class BoardReaderTest : public testing::Test {
  protected:
    std::optional<BoardEntry> read(const std::string& text) {
        file_ = folder_.file("sdb.json", text);
        return BoardReader({folder_.path()}).read("sdb");
    }

    TemporaryFolder folder_;
    std::string file_;
};

TEST_F(BoardReaderTest, ReadsAWriteUnderWay) {
    const auto entry = read(kWriting);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->disk, "sdb");
    EXPECT_EQ(entry->user, 1000U);
    EXPECT_EQ(entry->asker, 4711);
    EXPECT_EQ(entry->writer, 4712);
    EXPECT_EQ(entry->writerStart, 98765U);
    EXPECT_EQ(entry->firstBlock, 1536U);
    EXPECT_EQ(entry->bytes, 200000U);
    EXPECT_EQ(entry->phase, WritePhase::writing);
    EXPECT_EQ(entry->done, 1000U);
    EXPECT_EQ(entry->of, 200000U);
    EXPECT_EQ(entry->begun, 1700000000);
    EXPECT_FALSE(entry->verdict);
}

TEST_F(BoardReaderTest, ReadsAnOutcome) {
    const auto entry = read(with(R"("phase":"writing")", R"("phase":"done","verdict":"failed")"));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->phase, WritePhase::done);
    EXPECT_EQ(entry->verdict, WriteVerdict::failed);
}

TEST_F(BoardReaderTest, ReadsAPhaseThatIsAtItsEnd) {
    EXPECT_TRUE(read(with(R"("done":1000)", R"("done":200000)")));
}

TEST_F(BoardReaderTest, ReadsAsMuchAsANoteMayHold) {
    EXPECT_TRUE(read(std::string(kLongestBoard - kWriting.size(), ' ') + kWriting));
    EXPECT_FALSE(read(std::string(kLongestBoard - kWriting.size() + 1, ' ') + kWriting));
}

TEST_F(BoardReaderTest, LooksInTheSessionsFolderOnlyWhereThereIsOne) {
    ::setenv("XDG_RUNTIME_DIR", "/run/user/1000", 1);
    EXPECT_EQ(BoardReader::usualFolders(), (std::vector<fs::path>{kBoardFolder, "/run/user/1000/kestrav"}));
    for (const char* nowhere : {"", "run/user/1000"}) {
        ::setenv("XDG_RUNTIME_DIR", nowhere, 1);
        EXPECT_EQ(BoardReader::usualFolders(), std::vector<fs::path>{kBoardFolder});
    }
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(BoardReader::usualFolders(), std::vector<fs::path>{kBoardFolder});
}

TEST_F(BoardReaderTest, PassesOverMembersThatItDoesNotKnow) {
    EXPECT_TRUE(read(with(R"("begun")", R"("mood":{"good":[true]},"begun")")));
}

TEST_F(BoardReaderTest, TakesTheFirstFolderThatSaysSomething) {
    const TemporaryFolder other;
    folder_.file("sdb.json", "not JSON");
    other.file("sdb.json", kWriting);
    EXPECT_TRUE(BoardReader({folder_.path() / "missing", folder_.path(), other.path()}).read("sdb"));
}

TEST_F(BoardReaderTest, TellsAWriterThatLivesFromOneThatIsGone) {
    const std::string own = std::to_string(::getpid());
    const auto entryOf = [this](const std::string& pid, const std::string& start) {
        return read(with(R"("writer":4712,"writerStart":98765)", R"("writer":)" + pid + R"(,"writerStart":)" + start));
    };
    EXPECT_FALSE(entryOf(own, startOfThis())->writerIsGone());
    EXPECT_TRUE(entryOf(own, "1")->writerIsGone()) << "a later process of that number";
    const pid_t ended = ::fork();
    if (ended == 0) ::_exit(0);
    ::waitpid(ended, nullptr, 0);
    EXPECT_TRUE(entryOf(std::to_string(ended), startOfThis())->writerIsGone());
}

TEST_F(BoardReaderTest, TakesAWriterThatMayNotBeSignalledForAlive) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: becomes another user";
    const auto entry = read(with(R"("writer":4712,"writerStart":98765)",
                                 R"("writer":)" + std::to_string(::getpid()) + R"(,"writerStart":)" + startOfThis()));
    ASSERT_TRUE(entry);
    const pid_t other = ::fork();
    if (other == 0) ::_exit(::setresuid(65534, 65534, 65534) != 0 ? 2 : entry->writerIsGone() ? 1 : 0);
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
}

struct TextRow {
    std::string name;
    std::string text;

    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class BadBoardText : public BoardReaderTest, public testing::WithParamInterface<TextRow> {};

TEST_P(BadBoardText, IsNotBelieved) {
    ASSERT_TRUE(read(kWriting));
    EXPECT_FALSE(read(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadBoardText,
    testing::Values(TextRow{"Empty", ""}, TextRow{"HalfWritten", kWriting.substr(0, 90)},
                    TextRow{"Zeros", std::string(200, '\0')}, TextRow{"AList", "[" + kWriting + "]"},
                    TextRow{"Huge", std::string(kLongestBoard, ' ') + kWriting},
                    TextRow{"AnotherVersion", with(R"("version":1)", R"("version":2)")},
                    TextRow{"VersionAsText", with(R"("version":1)", R"("version":"1")")},
                    TextRow{"AnotherDisk", with(R"("sdb")", R"("sdc")")},
                    TextRow{"DiskAsNumber", with(R"("sdb")", "7")},
                    TextRow{"NegativeNumber", with(":200000,\"phase", ":-1,\"phase")},
                    TextRow{"Fraction", with(":1000,\"of", ":1000.5,\"of")},
                    TextRow{"FloatingNumber", with(":1000,\"of", ":1e3,\"of")},
                    TextRow{"NumberAsText", with(":1000,\"of", R"(:"1000","of)")},
                    TextRow{"TrueAsNumber", with(":1000,\"of", ":true,\"of")},
                    TextRow{"NumberTooLarge", with(":1000,\"of", ":99999999999999999999,\"of")},
                    TextRow{"UserTooLarge", with(R"("user":1000)", R"("user":4294967296)")},
                    TextRow{"ProcessTooLarge", with(R"("asker":4711)", R"("asker":2147483648)")},
                    TextRow{"NoProcess", with(R"("writer":4712)", R"("writer":0)")},
                    TextRow{"MissingMember", with(R"("begun":1700000000)", R"("began":1700000000)")},
                    TextRow{"MoreThanAll", with(R"("done":1000)", R"("done":200001)")},
                    TextRow{"UnknownPhase", with(R"("writing")", R"("resting")")},
                    TextRow{"PhaseAsNumber", with(R"("writing")", "3")},
                    TextRow{"DoneWithoutVerdict", with(R"("writing")", R"("done")")},
                    TextRow{"UnknownVerdict", with(R"("writing")", R"("done","verdict":"perhaps")")},
                    TextRow{"UnknownVerdictTooEarly", with(R"("writing")", R"("writing","verdict":"perhaps")")},
                    TextRow{"VerdictTooEarly", with(R"("writing")", R"("writing","verdict":"wrote")")}),
    [](const auto& row) { return row.param.name; });

struct FileRow {
    std::string name;
    std::function<void(const fs::path& folder)> make;

    friend void PrintTo(const FileRow& row, std::ostream* out) { *out << row.name; }
};

class BadBoardFile : public BoardReaderTest, public testing::WithParamInterface<FileRow> {};

TEST_P(BadBoardFile, IsNotBelieved) {
    ASSERT_TRUE(read(kWriting));
    GetParam().make(folder_.path());
    EXPECT_FALSE(BoardReader({folder_.path()}).read("sdb"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadBoardFile,
    testing::Values(
        FileRow{"Link",
                [](const fs::path& folder) {
                    fs::rename(folder / "sdb.json", folder / "real");
                    fs::create_symlink("real", folder / "sdb.json");
                }},
        FileRow{"Pipe",
                [](const fs::path& folder) {
                    fs::remove(folder / "sdb.json");
                    ::mkfifo((folder / "sdb.json").c_str(), 0644);
                }},
        FileRow{"Folder",
                [](const fs::path& folder) {
                    fs::remove(folder / "sdb.json");
                    fs::create_directory(folder / "sdb.json");
                }},
        FileRow{"WritableByOthers", [](const fs::path& folder) { ::chmod((folder / "sdb.json").c_str(), 0646); }},
        FileRow{"WritableByItsGroup", [](const fs::path& folder) { ::chmod((folder / "sdb.json").c_str(), 0664); }},
        FileRow{"InAFolderThatAllCanChange", [](const fs::path& folder) { ::chmod(folder.c_str(), 01777); }},
        FileRow{"Unreadable",
                [](const fs::path& folder) {
                    fs::remove(folder / "sdb.json");
                    fs::create_symlink("/proc/self/mem", folder / "sdb.json");
                }}),
    [](const auto& row) { return row.param.name; });

TEST_F(BoardReaderTest, DoesNotBelieveAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: gives files away";
    ASSERT_TRUE(read(kWriting));
    ASSERT_EQ(::chown(file_.c_str(), 65534, 65534), 0);
    EXPECT_FALSE(BoardReader({folder_.path()}).read("sdb"));
    ASSERT_EQ(::chown(file_.c_str(), 0, 0), 0);
    ASSERT_EQ(::chown(folder_.path().c_str(), 65534, 65534), 0);
    EXPECT_FALSE(BoardReader({folder_.path()}).read("sdb"));
}

TEST_F(BoardReaderTest, DoesNotFollowALinkInPlaceOfTheFolder) {
    ASSERT_TRUE(read(kWriting));
    const TemporaryFolder other;
    fs::create_directory_symlink(folder_.path(), other.path() / "link");
    EXPECT_FALSE(BoardReader({other.path() / "link"}).read("sdb"));
}

TEST_F(BoardReaderTest, LeavesTheFolderForNoName) {
    ASSERT_TRUE(read(kWriting));
    // What would be there for such a name.
    fs::create_directory(folder_.path() / "sub");
    folder_.file("sub/sdb.json", with(R"("sdb")", R"("sub/sdb")"));
    folder_.file(".sdb.json", with(R"("sdb")", R"(".sdb")"));
    folder_.file("sdd", with(R"("sdb")", R"("sdd\u0000")"));
    const BoardReader reader({folder_.path()});
    for (const std::string& name : {std::string("sub/sdb"), std::string(".sdb"), std::string("sdd\0", 4)})
        EXPECT_FALSE(reader.read(name)) << name;
    for (const std::string name : {"", ".", "..", "../sdb", "/sdb", "sdc"})
        EXPECT_FALSE(reader.read(name)) << name;
}

}  // namespace
}  // namespace kestrav
