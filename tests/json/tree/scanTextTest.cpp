#include <gtest/gtest.h>
#include <random>
#include <string>

#include "base/utf8.h"
#include "json/tree/hasMarks.h"
#include "json/tree/scanText.h"

namespace kestrav {
namespace {

/// The first byte that a text can't have unescaped, found in the dullest way.
std::size_t expectedStop(std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        if (byte < 0x20 || byte == '"' || byte == '\\') break;
        const std::size_t length = validUTF8SequenceLength(bytes.substr(at));
        if (length == 0) break;
        at += length;
    }
    return at;
}

void expectStops(const std::string& bytes) {
    const char* const begin = bytes.data();
    const char* const end = begin + bytes.size();
    const std::size_t expected = expectedStop(bytes);
    ASSERT_EQ(static_cast<std::size_t>(scanText(begin, end) - begin), expected) << testing::PrintToString(bytes);
    ASSERT_EQ(static_cast<std::size_t>(scanTextPlainly(begin, end) - begin), expected) << testing::PrintToString(bytes);
}

TEST(ScanText, StopsAtEachByteThatEndsAText) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t position = 0; position < 40; ++position) {
            std::string bytes(40, 'x');
            bytes[position] = static_cast<char>(byte);
            expectStops(bytes);
        }
    }
}

TEST(ScanText, JudgesEverySequenceOfTwoAndThreeBytes) {
    for (int first = 0x80; first < 0x100; ++first) {
        for (int second = 0; second < 0x100; second += 3) {
            for (const int third : {0x00, 0x22, 0x7F, 0x80, 0xBF, 0xC0, 0xFF}) {
                std::string bytes = "text";
                for (const int byte : {first, second, third})
                    bytes += static_cast<char>(byte);
                expectStops(bytes);
                expectStops(bytes + "behind it, long enough for a vector");
                expectStops("\xE2\x82\xAC" + bytes.substr(4) + "behind it, long enough for a vector");
            }
        }
    }
}

TEST(ScanText, JudgesSequencesOfFourBytes) {
    for (int first = 0xF0; first < 0xF8; ++first) {
        for (int second = 0x70; second < 0xD0; ++second) {
            for (const int last : {0x7F, 0x80, 0xBF, 0xC0}) {
                std::string bytes;
                for (const int byte : {first, second, 0x80, last})
                    bytes += static_cast<char>(byte);
                expectStops(bytes);
                expectStops(bytes + "behind it, long enough for a vector");
                bytes[2] = 'x';
                expectStops(bytes);
            }
        }
    }
}

TEST(ScanText, AgreesWithItsPlainTwinOnWhateverBytes) {
    std::mt19937_64 engine(20240229);
    const std::string pieces[] = {"a", "long enough to fill a vector", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    for (int round = 0; round < 20'000; ++round) {
        std::string bytes;
        for (std::size_t piece = 0; piece < engine() % 12; ++piece)
            bytes += pieces[engine() % std::size(pieces)];
        if (!bytes.empty() && round % 2 == 0) bytes[engine() % bytes.size()] = static_cast<char>(engine());
        expectStops(bytes);
    }
}

TEST(HasMarks, TellsOfEachByteOfAShortText) {
    for (std::size_t size = 0; size <= TreeNodes::kShortText; ++size) {
        EXPECT_FALSE(hasMarks(TreeNodes::shortText(std::string(size, 'x'))));
        for (std::size_t position = 0; position < size; ++position) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(size, 'x');
                text[position] = static_cast<char>(byte);
                const bool marked = byte < 0x20 || byte >= 0x80 || byte == '"' || byte == '\\';
                ASSERT_EQ(hasMarks(TreeNodes::shortText(text)), marked) << size << ' ' << position << ' ' << byte;
                ASSERT_EQ(hasMarksPlainly(TreeNodes::shortText(text)), marked) << size << ' ' << position;
            }
        }
    }
}

TEST(ScanSpace, StopsAtTheFirstByteThatIsNone) {
    for (std::size_t spaces = 0; spaces < 50; ++spaces) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string bytes;
            for (std::size_t at = 0; at < spaces; ++at)
                bytes += " \n\r\t"[at % 4];
            const bool isSpace = byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
            bytes += static_cast<char>(byte);
            bytes += "x and enough behind it for a vector";
            const char* const begin = bytes.data();
            const char* const expected = begin + spaces + (isSpace ? 1 : 0);
            ASSERT_EQ(scanSpace(begin, begin + bytes.size()), expected);
            ASSERT_EQ(scanSpacePlainly(begin, begin + bytes.size()), expected);
            ASSERT_EQ(scanSpace(begin, begin + spaces), begin + spaces);
        }
    }
}

}  // namespace
}  // namespace kestrav
