#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTest>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "app/LogText.h"
#include "tests/app/qt/PaintCounter.h"
#include "tests/app/qt/WindowOnFakes.h"

namespace kestrav {
namespace {

/// The lines of the log on their way from the update to the screen.
class LogLines : public WindowOnFakes {};

TEST_F(LogLines, ShowsEachLineBeforeTheTaskGoesOn) {
    std::vector<std::string> seen;
    window_.whileBusy([&] {
        for (const char* line : {"a", "b"}) {
            controller_->log(line);
            // What is shown is the toolkit's, and of its own thread alone.
            seen.push_back(logEdit().content());
        }
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"a\r\n", "a\r\nb\r\n"}));
    EXPECT_EQ(logEdit().toPlainText(), "a\nb\n");
}

TEST_F(LogLines, PaintsLinesTogetherThatComeFasterThanAScreenChanges) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    QElapsedTimer clock;
    clock.start();
    window_.whileBusy([&] {
        for (int line = 0; line < 3000; ++line) {
            controller_->log("line");
        }
    });
    EXPECT_LE(counter.count, clock.elapsed() / 16 + 2);
    EXPECT_EQ(logEdit().blockCount(), 3001);
}

TEST_F(LogLines, PaintsTheLastLineWhileTheTaskWaits) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    window_.whileBusy([&] {
        for (int line = 0; line < 20; ++line) {
            controller_->log("line");
        }
        for (QDeadlineTimer limit(20000); counter.lines < 20 && !limit.hasExpired();) {
            std::this_thread::yield();
        }
        EXPECT_EQ(counter.lines, 20);
    });
}

TEST_F(LogLines, PaintsTheNewestLineBeforeScrollingToItReturns) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    const PaintCounter counter(*logEdit().viewport(), &logEdit());
    const int before = counter.count;
    controller_->logText()->scrollToEndOfDocument();
    EXPECT_GT(counter.count, before);
}

TEST_F(LogLines, TakesALateLineAsFastAsAnEarlyOne) {
    window_.hide();
    const std::string line = "Loaded icon file: /home/somebody/firmware.fds with 200000 bytes.";
    // The processor's time and not the clock's: other programs are none of the log's business.
    const auto costOf = [&](int lines) {
        const std::clock_t begin = std::clock();
        for (int number = 0; number < lines; ++number) {
            controller_->log(line);
        }
        return std::clock() - begin;
    };
    std::clock_t early = 0;
    std::clock_t late = 0;
    window_.whileBusy([&] {
        early = costOf(2000);
        std::string many;
        for (int number = 0; number < 96000; ++number) {
            many += line + "\r\n";
        }
        ASSERT_TRUE(controller_->logText()->append(many));
        late = costOf(2000);
    });
    EXPECT_EQ(logEdit().document()->blockCount(), 100001);
    EXPECT_LT(late, 4 * early);
}

TEST_F(LogLines, StopsTakingLinesWhenTheLogIsGone) {
    const std::shared_ptr<LogText> text = controller_->logText();
    EXPECT_EQ(text->string(), "");
    delete &logEdit();
    EXPECT_EQ(text->string(), std::nullopt);
    EXPECT_FALSE(text->append("a"));
    text->scrollToEndOfDocument();
}

}  // namespace
}  // namespace kestrav
