#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "app/SupportRecord.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

class Record : public ::testing::Test {
  protected:
    SupportRecord::Time now_{1'795'332'600s + 125ms};
    SupportRecord record_{[this] { return now_; }};
};

TEST_F(Record, HasTheTimeOfEachLineAndAnswer) {
    record_.logged("Writing to device memory space.\r\nFinished writing to device.\r\n");
    now_ += 1500ms;
    const std::vector<std::string> arguments{"if=/a b", "of=/dev/rsdb"};
    record_.asked("dd", arguments);
    record_.answered("Refused: no.");
    record_.unanswered({Unanswered::Why::notAccepted, "Connection refused."});
    EXPECT_EQ(record_.text(),
              "2026-11-22T07:30:00.125Z log    Writing to device memory space.\n"
              "2026-11-22T07:30:00.125Z log    Finished writing to device.\n"
              "2026-11-22T07:30:01.625Z asked  dd if=/a b of=/dev/rsdb\n"
              "2026-11-22T07:30:01.625Z answer Refused: no.\n"
              "2026-11-22T07:30:01.625Z answer Connection refused.\n");
}

TEST_F(Record, LetsNothingFromOutsidePretendToBeAnEntry) {
    record_.answered("x\n2026-11-22T07:30:00.125Z answer Wrote all\x1b[2J\xff\u202e");
    EXPECT_EQ(
        record_.text(),
        "2026-11-22T07:30:00.125Z answer x\\x0a2026-11-22T07:30:00.125Z answer Wrote all\\x1b[2J\uFFFD\\u{202e}\n");
}

TEST_F(Record, CutsWhatIsTooLongAndSaysSo) {
    const std::string kept(4096, 'x');
    record_.answered(kept);
    EXPECT_TRUE(record_.text().ends_with(" answer " + kept + "\n"));
    record_.answered(kept + "y");
    EXPECT_TRUE(record_.text().ends_with(" answer " + kept.substr(3) + "...\n"));
    std::string euros;
    for (int euro = 0; euro < 2000; ++euro)
        euros += "\u20ac";
    record_.answered(euros);
    EXPECT_TRUE(record_.text().ends_with(" answer " + euros.substr(0, 4092) + "...\n"));
}

TEST_F(Record, IsBoundedByTheNewestEntries) {
    for (std::size_t line = 0; line < SupportRecord::kMostEntries + 2; ++line) {
        record_.logged(std::to_string(line));
    }
    const std::string text = record_.text();
    EXPECT_TRUE(text.starts_with("(2 earlier entries are not kept)\n2026-11-22T07:30:00.125Z log    2\n"));
    EXPECT_TRUE(text.ends_with(" log    20001\n"));
}

}  // namespace
}  // namespace kestrav
