#include <fstream>
#include <gtest/gtest.h>

#include "app/LastWords.h"
#include "app/qt/showLastWords.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

class LastWordsOn : public ::testing::Test {
  protected:
    LastWordsOn() { std::ofstream(image_) << "x"; }
    static std::string on(const LastScene& scene) { return lastWordsOn(scene).toStdString(); }

    TemporaryFolder folder_;
    std::string image_ = folder_.path() / "image.fds";
    const std::string log_ = "\n\nThe log: journalctl -t kestrav -t kestrav-commandd";
};

TEST_F(LastWordsOn, SayThatNothingWasWrittenWhereThatIsSo) {
    EXPECT_EQ(on({}), "Nothing was written to the accessory." + log_);
    EXPECT_EQ(on({true, false, image_}), "Nothing was written to the accessory." + log_);
}

TEST_F(LastWordsOn, SayWhatIsWrongWithTheImage) {
    EXPECT_EQ(on({true, false, folder_.path()}),
              "Nothing was written to the accessory.\n\n" + folder_.path().filename().string() +
                  " is a folder. Choose the file in it that holds the image." + log_);
}

TEST_F(LastWordsOn, PromiseNothingOnceAWriteWasAskedFor) {
    EXPECT_EQ(on({true, true, image_}),
              "The image may be on its way to the accessory: don't unplug it. Start Kestrav again and send the image "
              "again." +
                  log_);
    EXPECT_EQ(on({false, true, folder_.path()}),
              "It was not sending anything. What became of the last image stands in the log." + log_);
}

}  // namespace
}  // namespace kestrav
