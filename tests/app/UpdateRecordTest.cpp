#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "app/UpdateRecord.h"
#include "app/endingOf.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;

class TheRecord : public ::testing::Test {
  protected:
    void askToUnmount() { record_.asked("umount", Texts{"/dev/sdzzs1"}); }
    void askToWrite() {
        const std::string image = folder_.path() / "a picture=1.fds";
        std::ofstream(image) << std::string(1000, 'x');
        record_.asked("dd", Texts{"if=" + image, "of=/dev/rsdzz", "seek=1536", "bs=512"});
    }

    TemporaryFolder folder_;
    std::vector<AnswerTo::Kind> asked_;
    UpdateRecord record_{
        [this](AnswerTo::Kind kind) { asked_.push_back(kind); }, {}, BoardReader({folder_.path() / "board"})};
};

TEST_F(TheRecord, KnowsWhatWasAskedAndWhatCameOfIt) {
    record_.begin();
    askToUnmount();
    record_.answered("sdzz1 was not mounted.");
    askToWrite();
    record_.answered("Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.");
    const UpdateFacts facts = record_.facts();
    EXPECT_EQ(facts.request.disk, "sdzz");
    EXPECT_EQ(facts.request.firstBlock, 1536);
    EXPECT_EQ(facts.request.bytes, 1000);
    EXPECT_EQ(endingOf(facts), UpdateEnding::firmwareArrived);
    EXPECT_EQ(asked_, (std::vector{AnswerTo::Kind::unmount, AnswerTo::Kind::write}));
}

TEST_F(TheRecord, TakesSilenceAfterTheUnmountingForSilence) {
    askToUnmount();
    record_.answered("sdzz1 was not mounted.");
    askToWrite();
    record_.unanswered({Unanswered::Why::closedWithoutAReply, ""});
    EXPECT_TRUE(record_.facts().mayGoOn());
    EXPECT_EQ(record_.follow(), WriteWatch::End::unknown) << "there is no board";
    EXPECT_EQ(endingOf(record_.facts()), UpdateEnding::serviceGone);
}

TEST_F(TheRecord, ForgetsTheUpdateBefore) {
    askToWrite();
    record_.answered("Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.");
    record_.begin();
    EXPECT_FALSE(record_.facts().write);
    EXPECT_EQ(record_.facts().request.disk, "");
    askToUnmount();
    record_.unanswered({Unanswered::Why::notAccepted, ""});
    EXPECT_FALSE(record_.facts().write) << "an unmounting is no write";
}

}  // namespace
}  // namespace kestrav
