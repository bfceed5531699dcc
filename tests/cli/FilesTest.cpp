#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/OrdinaryFile.h"
#include "cli/writeOutputFile.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "kestrav-files.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return folder_ / name; }

    std::string made(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    static std::string content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static std::string refusal(const std::string& path) {
        const auto opened = OrdinaryFile::open(path);
        return opened ? "accepted" : opened.problem().sentence;
    }

    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    static std::span<const std::byte> bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

  private:
    fs::path folder_;
};

using OrdinaryFiles = Files;
using OutputFiles = Files;

TEST_F(OrdinaryFiles, AreReadByOffset) {
    const auto opened = OrdinaryFile::open(made("image", "0123456789"));
    ASSERT_TRUE(opened);
    const auto& image = opened.value();
    EXPECT_EQ(image.size(), 10);
    EXPECT_EQ(image.read(4, 3), (std::vector{std::byte{'4'}, std::byte{'5'}, std::byte{'6'}}));
    EXPECT_EQ(image.read(8, 100).size(), 2U);
    EXPECT_TRUE(image.read(11, 1).empty());
}

TEST_F(OrdinaryFiles, EndWhereTheyEndedWhenTheyWereOpened) {
    const std::string path = made("image", "0123456789");
    const auto opened = OrdinaryFile::open(path);
    ASSERT_TRUE(opened);
    std::ofstream(path, std::ios::app) << "more";
    EXPECT_EQ(opened.value().read(4, 100).size(), 6U);
}

TEST_F(OrdinaryFiles, AreReadAsFarAsTheyStillGo) {
    const std::string path = made("image", "0123456789");
    const auto opened = OrdinaryFile::open(path);
    ASSERT_TRUE(opened);
    fs::resize_file(path, 3);
    EXPECT_EQ(opened.value().read(0, 10).size(), 3U);
}

TEST_F(OrdinaryFiles, BearTheirAbsolutePath) {
    const std::string absolute = made("image", "x");
    const fs::path before = fs::current_path();
    fs::current_path(fs::path(absolute).parent_path());
    const auto opened = OrdinaryFile::open("image");
    fs::current_path(before);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened.value().path(), absolute);
}

TEST_F(OrdinaryFiles, MayBeEmpty) {
    EXPECT_EQ(refusal(made("empty", "")), "accepted");
}

TEST_F(OrdinaryFiles, AreRefusedWhenMissing) {
    EXPECT_NE(refusal(path("none")).find("No such file"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenAFolder) {
    EXPECT_NE(refusal(path("")).find("is a folder"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenAPipeWithoutWaitingForAWriter) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_NE(refusal(path("pipe")).find("is a pipe"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenADevice) {
    EXPECT_NE(refusal("/dev/null").find("is a device"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenTheNameIsNotUtf8) {
    EXPECT_NE(refusal(made("\xff", "x")).find("not valid UTF-8"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenTheirFolderIsNotUtf8) {
    const fs::path folder = path("\xff");
    fs::create_directory(folder);
    const fs::path before = fs::current_path();
    made("\xff/image", "x");
    fs::current_path(folder);
    const std::string sentence = refusal("image");
    fs::current_path(before);
    EXPECT_NE(sentence.find("not valid UTF-8"), std::string::npos);
}

TEST_F(OrdinaryFiles, AreRefusedWhenTheServiceWouldSeeAnotherFile) {
    EXPECT_NE(refusal("/proc/self/status").find("another file to the command service"), std::string::npos);
}

TEST_F(OutputFiles, AreWrittenWhole) {
    EXPECT_TRUE(writeOutputFile(path("out"), bytes("content")));
    EXPECT_EQ(content(path("out")), "content");
}

TEST_F(OutputFiles, ReplaceWhatWasThereAndKeepItsRights) {
    const std::string out = made("out", "something longer than the new content");
    ASSERT_EQ(::chmod(out.c_str(), 0640), 0);
    EXPECT_TRUE(writeOutputFile(out, bytes("new")));
    EXPECT_EQ(content(out), "new");
    EXPECT_EQ(fs::status(out).permissions(), fs::perms(0640));
}

TEST_F(OutputFiles, LeaveALinkALink) {
    made("target", "old");
    fs::create_symlink("target", path("link"));
    EXPECT_TRUE(writeOutputFile(path("link"), bytes("new")));
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(content(path("target")), "new");
}

TEST_F(OutputFiles, AreWrittenInPlaceWhenTheyAreDevices) {
    EXPECT_TRUE(writeOutputFile("/dev/null", bytes("gone")));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFiles, SayThatTheDiskIsFull) {
    const auto written = writeOutputFile("/dev/full", bytes("content"));
    ASSERT_FALSE(written);
    EXPECT_NE(written.problem().sentence.find("No space left"), std::string::npos);
}

TEST_F(OutputFiles, LeaveNothingBehindWhenTheyFail) {
    const auto written = writeOutputFile(path("missing/out"), bytes("content"));
    ASSERT_FALSE(written);
    EXPECT_NE(written.problem().sentence.find("No such file"), std::string::npos);
    EXPECT_EQ(filesInFolder(), 0U);
}

}  // namespace
}  // namespace kestrav
