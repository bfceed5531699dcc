#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "services/helper/bless/WantedFile.h"
#include "tests/base/flushFaults.h"
#include "tests/services/helper/InstallerInARoom.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class WantedFiles : public Bless {
  protected:
    void SetUp() override {
        Bless::SetUp();
        flushFaults() = {};
    }
    void TearDown() override { flushFaults() = {}; }

    const WantedFile wanted_{"/usr/local/libexec", "program", 0755, "its bytes"};
};

TEST_F(WantedFiles, AreOnTheDiskBeforeTheyTakeTheirPlaceAndAfterwards) {
    auto staged = wanted_.stage();
    ASSERT_TRUE(staged) << staged.problem().sentence;
    EXPECT_THAT(flushFaults().flushed, ElementsAre("file"));
    EXPECT_FALSE(std::filesystem::exists(wanted_.path()));
    ASSERT_TRUE(wanted_.putInPlace(std::move(staged.value())));
    EXPECT_THAT(flushFaults().flushed, ElementsAre("file", "folder"));
    EXPECT_EQ(contents(wanted_.path()), "its bytes");
}

TEST_F(WantedFiles, AreGoneFromTheDiskWhenTheyAreRemoved) {
    ASSERT_TRUE(wanted_.putInPlace(std::move(wanted_.stage().value())));
    flushFaults() = {};
    ASSERT_TRUE(wanted_.remove().value());
    EXPECT_THAT(flushFaults().flushed, ElementsAre("folder"));
    flushFaults() = {};
    ASSERT_FALSE(wanted_.remove().value());
    EXPECT_THAT(flushFaults().flushed, IsEmpty());
}

TEST_F(WantedFiles, AreNotCalledWrittenWhenTheDiskDoesNotKeepThem) {
    flushFaults().error = EIO;
    const auto staged = wanted_.stage();
    ASSERT_FALSE(staged);
    EXPECT_EQ(staged.problem().sentence, "The file /usr/local/libexec/program can't be written: Input/output error.");
    EXPECT_THAT(leftOver(), IsEmpty());
}

TEST_F(WantedFiles, AreNotCalledInstalledWhenTheDiskDoesNotKeepTheirPlace) {
    auto staged = wanted_.stage();
    ASSERT_TRUE(staged);
    flushFaults().error = EIO;
    const auto placed = wanted_.putInPlace(std::move(staged.value()));
    ASSERT_FALSE(placed);
    EXPECT_THAT(placed.problem().sentence, HasSubstr("The folder of /usr/local/libexec/program can't be written"));
    const auto removed = wanted_.remove();
    ASSERT_FALSE(removed);
    EXPECT_THAT(removed.problem().sentence, HasSubstr("The folder /usr/local/libexec can't be written"));
}

}  // namespace
}  // namespace kestrav
