#include <gtest/gtest.h>

#include "json/tree/Decimal.h"

namespace kestrav {
namespace {

const std::string k38Nines(38, '9');

struct Row {
    std::string text;
    std::string written;
    std::size_t length;
};

class ScanDecimal : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, ScanDecimal,
    testing::Values(Row{"0", "0", 1}, Row{"-0", "0", 2}, Row{"12.5", "12.5", 4}, Row{"+7", "7", 2},
                    Row{"-120", "-120", 4}, Row{".5", "0.5", 2}, Row{"5.", "5", 2}, Row{"0.00100", "0.001", 7},
                    Row{"1e3", "1000", 3}, Row{"1E+3", "1000", 4}, Row{"25e-1", "2.5", 5}, Row{"12e", "12", 2},
                    Row{"12e+", "12", 2}, Row{"1.2.3", "1.2", 3}, Row{"12abc", "12", 2}, Row{"1e400", "1e+400", 5},
                    Row{"-1.5e-400", "-1.5e-400", 9}, Row{"0.000001", "0.000001", 8}, Row{"0.0000001", "1e-7", 9},
                    Row{"12345678901234567890.12345678901234567", "12345678901234567890.12345678901234567", 38},
                    Row{"123456789012345678901234567890", "123456789012345678901234567890", 30},
                    Row{k38Nines, k38Nines, 38}, Row{"1" + std::string(37, '0'), "1" + std::string(37, '0'), 38},
                    Row{"1" + std::string(38, '0'), "1e+38", 39}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(ScanDecimal, ReadsTheLongestNumberAtTheFront) {
    const ScannedDecimal scan = scanDecimal(GetParam().text);
    EXPECT_EQ(scan.length, GetParam().length);
    EXPECT_FALSE(scan.outOfRange);
    EXPECT_EQ(textOf(scan.value), GetParam().written);
}

class ScanNothing : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Texts, ScanNothing, testing::Values("", "abc", "-", "+", ".", "-.", "e5", " 1", "--1"));

TEST_P(ScanNothing, IsNotANumber) {
    const ScannedDecimal scan = scanDecimal(GetParam());
    EXPECT_EQ(scan.length, 0U);
    EXPECT_TRUE(scan.value.notANumber);
    EXPECT_EQ(textOf(scan.value), "NaN");
}

struct Rounded {
    std::string behind38Digits;
    std::string last;
};

class ScanLongDecimal : public testing::TestWithParam<Rounded> {};
INSTANTIATE_TEST_SUITE_P(Digits, ScanLongDecimal,
                         testing::Values(Rounded{"4", "2"}, Rounded{"5", "2"}, Rounded{"51", "3"}, Rounded{"6", "3"},
                                         Rounded{"50000000000000000001", "3"}, Rounded{"49999999999999999999", "2"}));

TEST_P(ScanLongDecimal, RoundsHalfToEvenAt38Digits) {
    const std::string front = "1." + std::string(36, '3');
    EXPECT_EQ(textOf(scanDecimal(front + "2" + GetParam().behind38Digits).value), front + GetParam().last);
}

TEST(ScanDecimalRounding, GoesToEvenFromAnOddDigit) {
    const std::string front = "1." + std::string(36, '3');
    EXPECT_EQ(textOf(scanDecimal(front + "15").value), front + "2");
}

TEST(ScanDecimalRounding, CarriesThroughNines) {
    EXPECT_EQ(textOf(scanDecimal(k38Nines + "9").value), "1e+39");
    EXPECT_EQ(textOf(scanDecimal("0." + k38Nines + "5").value), "1");
}

TEST(ScanDecimalRange, EndsAtTheLargestExponent) {
    EXPECT_FALSE(scanDecimal("1e999999999").outOfRange);
    EXPECT_FALSE(scanDecimal("1e-999999999").outOfRange);
    EXPECT_TRUE(scanDecimal("10e999999999").outOfRange);
    EXPECT_TRUE(scanDecimal("0.1e-999999999").outOfRange);
    EXPECT_TRUE(scanDecimal("1e99999999999999999999").outOfRange);
    EXPECT_TRUE(scanDecimal("1e-99999999999999999999").outOfRange);
    EXPECT_FALSE(scanDecimal("0e99999999999999999999").outOfRange);
}

TEST(ScanDecimalShape, CountsTheDigitsThatMatter) {
    EXPECT_EQ(scanDecimal("0012300").significant, 3);
    EXPECT_EQ(scanDecimal("0012300").integerDigits, 5);
    EXPECT_EQ(scanDecimal("0.00123").significant, 3);
    EXPECT_TRUE(scanDecimal("12").isInteger);
    EXPECT_FALSE(scanDecimal("12.0").isInteger);
    EXPECT_FALSE(scanDecimal("12e0").isInteger);
}

}  // namespace
}  // namespace kestrav
