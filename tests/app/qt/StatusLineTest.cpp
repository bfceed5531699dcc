#include <QCoreApplication>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/app/qt/WindowOnFakes.h"

namespace kestrav {
namespace {

/// The service's own sentence in the window.
class ServicesMessage : public WindowOnFakes {};

TEST_F(ServicesMessage, ShowsTheNewestAnswerFromAnyThread) {
    answers_.answered("first");
    window_.whileBusy([&] { answers_.answered("second <b>%s\n\x1b"); });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "second <b>%s\\x0a\\x1b");
}

TEST_F(ServicesMessage, ShowsWhatTheServiceAnswersAndTheLogHas) {
    service_.setBehaviour(answers("first"));
    commands_.runWithCommand("umount", {});
    service_.setBehaviour(answers("second <b>%s\n\x1b"));
    window_.whileBusy([&] { commands_.runWithCommand("umount", {}); });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "second <b>%s\\x0a\\x1b");
    EXPECT_EQ(systemLog_.entries(), (std::vector<std::string>{"first", "second <b>%s\n\x1b"}));
}

TEST_F(ServicesMessage, ShowsWhyTheServiceGaveNoAnswer) {
    CommandService unreachable(systemLog_, {.address = "256.256.256.256"}, &answers_);
    window_.whileBusy([&] { unreachable.runWithCommand("umount", {}); });
    QCoreApplication::processEvents();
    ASSERT_EQ(systemLog_.entries().size(), 1U);
    EXPECT_EQ(window_.statusLine().toPlainText().toStdString(), systemLog_.entries()[0]);
}

TEST_F(ServicesMessage, KeepsItsMessageWhereTheLogHasNone) {
    window_.whileBusy([&] {
        answers_.answered("sdb1 was not mounted.");
        answers_.answered("\xff");
        answers_.unanswered({Unanswered::Why::noReplyInTime, ""});
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.statusLine().toPlainText(), "sdb1 was not mounted.");
}

TEST_F(ServicesMessage, ShowsNoMessageOfAnEarlierTask) {
    answers_.answered("Wrote 200000 bytes to sdb at block 1536, verified, 12.3 MB/s.");
    window_.whileBusy([] {});
    EXPECT_EQ(window_.statusLine().toPlainText(), "");
    window_.whileBusy([&] { answers_.answered("Refused: not this time."); });
    EXPECT_EQ(window_.statusLine().toPlainText(), "Refused: not this time.");
}

TEST_F(ServicesMessage, ShowsTwoLinesOfAMessageWithoutAScrollBar) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    answers_.answered(
        "Refused: the image has 16777216 bytes, but sdzz has room for 15990784 from block 1536 on. Nothing.");
    QCoreApplication::processEvents();
    EXPECT_GE(window_.statusLine().document()->firstBlock().layout()->lineCount(), 2);
    EXPECT_FALSE(window_.statusLine().verticalScrollBar()->isVisible());
}

TEST_F(ServicesMessage, OutlivesNoMessageBadly) {
    std::optional<StatusLineAnswers> answers;
    auto line = std::make_unique<StatusLine>();
    answers.emplace(*line);
    CommandService commands(systemLog_, {.port = service_.port()}, &*answers);
    service_.setBehaviour(kestrav::answers("on its way"));
    std::thread([&] { commands.runWithCommand("umount", {}); }).join();
    EXPECT_EQ(line->toPlainText(), "") << "shown before the event loop had its turn";
    line.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(systemLog_.entries().back(), "on its way");
}

}  // namespace
}  // namespace kestrav
