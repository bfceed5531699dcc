#include <gtest/gtest.h>
#include <utility>

#include "tests/cli/Commands.h"

namespace kestrav {
namespace {

using Pull = Commands;
using Save = Commands;

TEST_F(Pull, AsksForTheBlocks) {
    plugIn(512);
    service.setBehaviour(answers(std::string(1024, 'x')));
    EXPECT_EQ(carriedOut(PullInvocation{1536, 2}), ExitCode::success);
    EXPECT_EQ(out.str(), std::string(1024, 'x'));
    EXPECT_EQ(err.str(), "");
    ASSERT_EQ(service.requests().size(), 1U);
    EXPECT_NE(service.requests()[0].find(R"("skip=1536","count=2")"), std::string::npos);
}

TEST_F(Pull, FailsWhenTheBlocksDoNotCome) {
    plugIn(512);
    service.setBehaviour(answers("Refused: block 0 lies past the end of disk2, which has 0 of them."));
    EXPECT_EQ(carriedOut(PullInvocation{0, 2}), ExitCode::wentWrong);
    EXPECT_TRUE(complained("Nothing was read: block 0 lies past the end of disk2, which has 0 of them.\n"));
    service.setBehaviour(answers(std::string(511, 'x')));
    EXPECT_EQ(carriedOut(PullInvocation{0, 1}), ExitCode::nobodyKnows);
}

/// The blocks that a request for them asks for, each filled with the last digit of its number.
LoopbackBehaviour givesBlocks() {
    return [](LoopbackConnection& connection) {
        const std::string request = connection.receiveRequest();
        const auto numberBehind = [&request](const std::string& word) {
            return std::stoi(request.substr(request.find(word) + word.size()));
        };
        std::string blocks;
        const int first = numberBehind("skip=");
        for (int block = first; block < first + numberBehind("count="); ++block)
            blocks += std::string(512, static_cast<char>('0' + block % 10));
        connection.send(blocks);
    };
}

std::string blocksFrom(int first, int count) {
    std::string blocks;
    for (int block = first; block < first + count; ++block)
        blocks += std::string(512, static_cast<char>('0' + block % 10));
    return blocks;
}

TEST_F(Pull, GivesWhatTheWireCarriedInAsManyRequestsAsItTakes) {
    plugIn(512);
    service.setBehaviour(givesBlocks());
    EXPECT_EQ(carriedOut(PullInvocation{7, 50}), ExitCode::success);
    EXPECT_EQ(out.str(), blocksFrom(7, 50));
    ASSERT_EQ(service.requests().size(), 3U);
    EXPECT_NE(service.requests()[0].find(R"("skip=7","count=19")"), std::string::npos);
    EXPECT_NE(service.requests()[2].find(R"("skip=45","count=12")"), std::string::npos);
    EXPECT_TRUE(on.systemLog.entries().empty()) << "blocks are data, not entries of a log";
}

TEST_F(Pull, WritesItsFileWholeOrNotAtAll) {
    plugIn(512);
    service.setBehaviour(givesBlocks());
    const std::string output = made("out", "what was there");
    EXPECT_EQ(carriedOut(PullInvocation{0, 20, output}), ExitCode::success);
    EXPECT_EQ(contentOf(output), blocksFrom(0, 20));
    EXPECT_EQ(out.str(), "Saved 10240 bytes of disk2 from block 0 on in " + output + ".\n");
    service.setBehaviour(answers("Failed: the disk does not answer."));
    EXPECT_EQ(carriedOut(PullInvocation{0, 30, output}), ExitCode::wentWrong);
    EXPECT_EQ(contentOf(output), blocksFrom(0, 20));
}

TEST_F(Pull, AsksAgainForAnAnswerThatCameInPart) {
    plugIn(512);
    auto turn = std::make_shared<std::atomic<int>>(0);
    service.setBehaviour(
        [turn](LoopbackConnection& connection) { answers(std::string((*turn)++ == 0 ? 300 : 512, 'x'))(connection); });
    EXPECT_EQ(carriedOut(PullInvocation{0, 1}), ExitCode::success);
    EXPECT_EQ(out.str(), std::string(512, 'x'));
}

TEST_F(Pull, SaysThatItsFileCannotBeWrittenBeforeItAsks) {
    plugIn(512);
    EXPECT_EQ(carriedOut(PullInvocation{0, 1, pathOf("missing/out")}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("can't be written"));
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Pull, RefusesNumbersThatNoDiskHas) {
    plugIn(512);
    for (const auto& [block, count] : {std::pair{0L, 0L}, {0L, INT64_MAX}, {INT64_MAX, 1L}, {1L, INT64_MAX / 512 + 1}})
        EXPECT_EQ(carriedOut(PullInvocation{block, count}), ExitCode::wrongCall) << block << ' ' << count;
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Pull, NoticesThatTheAccessoryWasChanged) {
    plugIn(512);
    service.setBehaviour([this](LoopbackConnection& connection) {
        on.registry.unplugAll();
        on.registry.plugIn({.id = 99, .name = "Another", .disk = "disk2"});
        givesBlocks()(connection);
    });
    EXPECT_EQ(carriedOut(PullInvocation{0, 20}), ExitCode::wentWrong);
    EXPECT_TRUE(complained("The accessory was changed while it was read."));
}

TEST_F(Save, KeepsTheWholeFirmwareArea) {
    plugIn(512);
    service.setBehaviour(givesBlocks());
    EXPECT_EQ(carriedOut(SaveInvocation{ImageKind::firmware, pathOf("kept.fds")}), ExitCode::success);
    EXPECT_EQ(contentOf(pathOf("kept.fds")), blocksFrom(1536, 512));
}

TEST_F(Save, KeepsAsMuchOfAnIconAsIsAskedFor) {
    plugIn(512);
    service.setBehaviour(givesBlocks());
    EXPECT_EQ(carriedOut(SaveInvocation{ImageKind::icon, pathOf("kept.fif"), 1000}), ExitCode::success);
    EXPECT_EQ(contentOf(pathOf("kept.fif")), blocksFrom(2048, 2).substr(0, 1000));
    EXPECT_EQ(carriedOut(SaveInvocation{ImageKind::icon, pathOf("other.fif")}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("Say with --bytes how long it is."));
}

TEST_F(Pull, FailsWithoutAnAccessory) {
    EXPECT_EQ(carriedOut(PullInvocation{0, 1}), ExitCode::failure);
    EXPECT_TRUE(service.requests().empty());
}

}  // namespace
}  // namespace kestrav
