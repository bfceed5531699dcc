#include <gtest/gtest.h>
#include <string>

#include "base/SystemLog.h"

namespace kestrav {
namespace {

TEST(EscapedForTerminal, LeavesTextAndUtf8Alone) {
    EXPECT_EQ(escapedForTerminal("100 % of \"größe\""), "100 % of \"größe\"");
}

TEST(EscapedForTerminal, ShowsControlCharactersAsHexadecimal) {
    EXPECT_EQ(escapedForTerminal(std::string_view("a\x1b[2J\n\0\x7f", 8)), "a\\x1b[2J\\x0a\\x00\\x7f");
}

TEST(EscapedForTerminal, ShowsTheUpperControlCharactersAsHexadecimal) {
    EXPECT_EQ(escapedForTerminal("\u0080 \u009b2J \u009f \u00a0"), "\\xc2\\x80 \\xc2\\x9b2J \\xc2\\x9f \u00a0");
}

TEST(EscapedForTerminal, ShowsWhatIsNotUtf8AsHexadecimal) {
    EXPECT_EQ(escapedForTerminal("a\xff\xc3"), "a\\xff\\xc3");
}

TEST(SyslogSystemLog, CopiesTheEntryToStandardErrorAsData) {
    testing::internal::CaptureStderr();
    SyslogSystemLog("kestrav-test").write("50 %s %n done");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "kestrav-test: 50 %s %n done\n");
}

}  // namespace
}  // namespace kestrav
