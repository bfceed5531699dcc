#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

#include "command/CommandService.h"
#include "tests/base/RecordingLog.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;

struct Line {
    std::optional<std::string_view> response;
    std::string logged;
};

class RunResponderWithResp : public ::testing::TestWithParam<Line> {};

TEST_P(RunResponderWithResp, LogsTheDebugForm) {
    kestrav::RecordingLog log;
    CommandService(log).runResponderWithResp(GetParam().response);
    EXPECT_THAT(log.entries(), ElementsAre(GetParam().logged));
}

INSTANTIATE_TEST_SUITE_P(Responses, RunResponderWithResp,
                         ::testing::Values(Line{std::nullopt, "Response: nil"}, Line{"", R"(Response: Optional(""))"},
                                           Line{"nil", R"(Response: Optional("nil"))"},
                                           Line{"done", R"(Response: Optional("done"))"},
                                           Line{"say \"hi\"", R"(Response: Optional("say \"hi\""))"},
                                           Line{"a\\b", R"(Response: Optional("a\\b"))"},
                                           Line{"1\t2\n3\r", R"(Response: Optional("1\t2\n3\r"))"},
                                           Line{std::string_view("\0", 1), R"(Response: Optional("\0"))"},
                                           Line{"\x01\x1b[2J\x7f", R"(Response: Optional("\u{01}\u{1B}[2J\u{7F}"))"},
                                           Line{"it's größe 100 %s", R"(Response: Optional("it\'s größe 100 %s"))"}));

}  // namespace
}  // namespace kestrav
