#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>

#include "app/PersistentStore.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/flushFaults.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class StoreFile : public ::testing::Test {
  protected:
    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(file_).rdbuf();
        return text.str();
    }
    void put(const std::string& text) const { std::ofstream(file_) << text; }
    std::string failure() const {
        PersistentStore store(file_, "Kestrav");
        const auto opened = store.open();
        return opened ? "none" : opened.problem().sentence;
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "CocoaAppCD.storedata";
};

TEST_F(StoreFile, MakesAnEmptyXMLFile) {
    EXPECT_EQ(failure(), "none");
    EXPECT_EQ(content(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<store type=\"XML\" model=\"Kestrav\" />\n");
}

TEST_F(StoreFile, IsForItsOwnerAlone) {
    EXPECT_EQ(failure(), "none");
    EXPECT_EQ(std::filesystem::status(file_).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(StoreFile, GivesBackWhatWasSaved) {
    const PersistentStore::Records records{{"a", ""}, {"b \"<&>'", "line\r\n\ttab  ü\x01"}};
    PersistentStore store(file_, "Kestrav");
    ASSERT_TRUE(store.open());
    ASSERT_TRUE(store.save(records));
    PersistentStore again(file_, "Kestrav");
    ASSERT_TRUE(again.open());
    EXPECT_EQ(again.records(), records);
}

TEST_F(StoreFile, IsReadAnew) {
    PersistentStore store(file_, "Kestrav");
    ASSERT_TRUE(store.open());
    const std::string empty = content();
    ASSERT_TRUE(store.save({{"a", "b"}}));
    put(empty);
    ASSERT_TRUE(store.open());
    EXPECT_TRUE(store.records().empty());
}

TEST_F(StoreFile, IsBroughtToTheDiskWithItsFolder) {
    PersistentStore store(file_, "Kestrav");
    flushFaults() = {};
    ASSERT_TRUE(store.open());
    EXPECT_THAT(flushFaults().flushed, ElementsAre("file", "folder"));
}

TEST_F(StoreFile, LeavesNothingButTheFile) {
    PersistentStore store(file_, "Kestrav");
    ASSERT_TRUE(store.open());
    ASSERT_TRUE(store.save({{"a", "b"}}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(StoreFile, RefusesWhatIsNotAStore) {
    put("");
    EXPECT_THAT(failure(), HasSubstr("Could not understand"));
    put("<store type=\"XML\" model=\"Kestrav\">");
    EXPECT_THAT(failure(), HasSubstr("Could not understand"));
    put("<store type=\"XML\" model=\"Other\"/>");
    EXPECT_THAT(failure(), HasSubstr("which holds something else"));
    EXPECT_EQ(content(), "<store type=\"XML\" model=\"Other\"/>");
}

TEST_F(StoreFile, DoesNotWaitForAPipe) {
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_THAT(failure(), HasSubstr("Could not read"));
}

TEST_F(StoreFile, ReadsNoMoreThanItsLimit) {
    put("x");
    std::filesystem::resize_file(file_, (16U << 20U) + 1);
    EXPECT_THAT(failure(), HasSubstr("File too large"));
}

/// Fails when the file can't be longer than `bytes`, as on a full disk.
void saveWithNoMoreRoomThan(rlim_t bytes, const std::filesystem::path& file) {
    ::signal(SIGXFSZ, SIG_IGN);
    PersistentStore store(file, "Kestrav");
    if (!store.open()) std::_Exit(1);
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto saved = store.save({{"long", std::string(1000, 'x')}});
    std::_Exit(!saved && saved.problem().cause == std::errc::file_too_large && store.records().empty() ? 0 : 2);
}

TEST_F(StoreFile, IsAsItWasWhenTheDiskIsFull) {
    EXPECT_EQ(failure(), "none");
    const std::string before = content();
    EXPECT_EXIT(saveWithNoMoreRoomThan(100, file_), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(content(), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(StoreFile, SaysWhereItCouldNotCreateAFile) {
    file_ = folder_.path() / "missing" / "file";
    EXPECT_THAT(failure(), HasSubstr("Could not create a file in " + (folder_.path() / "missing").string()));
}

}  // namespace
}  // namespace kestrav
