#include <gtest/gtest.h>

#include "device/repairedDeviceName.h"

namespace kestrav {
namespace {

using namespace std::string_view_literals;

struct NameRow {
    const char* title;
    std::string reported;
    std::string kept;
};

void PrintTo(const NameRow& row, std::ostream* out) {
    *out << row.title;
}

class RepairedDeviceName : public ::testing::TestWithParam<NameRow> {};

TEST_P(RepairedDeviceName, IsKeptAs) {
    EXPECT_EQ(repairedDeviceName(GetParam().reported), GetParam().kept);
}

std::string letters(std::size_t count) {
    return std::string(count, 'n');
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RepairedDeviceName,
    ::testing::Values(NameRow{"Plain", "Kestrav Accessory", "Kestrav Accessory"}, NameRow{"Empty", "", ""},
                      NameRow{"UpToItsFirstNul", std::string("Acc\0essory"sv), "Acc"},
                      NameRow{"EmptyBeforeANul", std::string("\0name"sv), ""},
                      NameRow{"Of127Bytes", letters(127), letters(127)},
                      NameRow{"Of128BytesLosesOne", letters(128), letters(127)},
                      NameRow{"OfAPage", letters(4096), letters(127)},
                      NameRow{"LosesACharacterThatTheLimitSplits", letters(126) + "\u00e9", letters(126)},
                      NameRow{"LosesALongCharacterWhole", letters(124) + "\U0001F600", letters(124)},
                      NameRow{"KeepsACharacterThatEndsAtTheLimit", letters(125) + "\u00e9", letters(125) + "\u00e9"},
                      NameRow{"ShowsABadByte",
                              "a\xFF"
                              "b",
                              "a\uFFFD"
                              "b"},
                      NameRow{"ShowsASurrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                      NameRow{"ShowsAnOverlongForm", "\xC0\xAF", "\uFFFD\uFFFD"},
                      NameRow{"ShowsACharacterThatWasCutBefore", "ab\xE2\x82", "ab\uFFFD\uFFFD"},
                      NameRow{"OfBadBytesStaysWithinTheLimit", std::string(127, '\xFF'),
                              [] {
                                  std::string text;
                                  for (int i = 0; i < 42; ++i)
                                      text += "\uFFFD";
                                  return text;
                              }()}),
    [](const auto& row) { return row.param.title; });

}  // namespace
}  // namespace kestrav
