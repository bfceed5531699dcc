#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>

#include "json/tree/Number.h"

namespace kestrav {
namespace {

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kHighestUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Decimal kNotANumber{.notANumber = true};

Number decimal(std::string_view text) {
    return Number::decimalNumber(text);
}

TEST(Number, RemembersWhatItWasMadeFrom) {
    EXPECT_EQ(Number(true).kind(), Number::Kind::boolean);
    EXPECT_EQ(Number(1).kind(), Number::Kind::integer);
    EXPECT_EQ(Number(std::int8_t{1}).kind(), Number::Kind::integer);
    EXPECT_EQ(Number(1U).kind(), Number::Kind::unsignedInteger);
    EXPECT_EQ(Number(1.0).kind(), Number::Kind::floating);
    EXPECT_EQ(Number(1.0F).kind(), Number::Kind::floating);
    EXPECT_EQ(decimal("1").kind(), Number::Kind::decimal);
}

TEST(Number, IsABooleanOnlyWhenMadeFromOne) {
    EXPECT_TRUE(Number(true).isBool());
    EXPECT_TRUE(Number(false).isBool());
    EXPECT_FALSE(Number(1).isBool());
    EXPECT_FALSE(Number(std::int8_t{1}).isBool());
    EXPECT_FALSE(Number(0.0).isBool());
    EXPECT_FALSE(decimal("1").isBool());
}

TEST(NumberEquality, NeverHoldsBetweenABooleanAndAnotherNumber) {
    EXPECT_TRUE(Number(true) == Number(true));
    EXPECT_FALSE(Number(true) == Number(false));
    EXPECT_FALSE(Number(true) == Number(1));
    EXPECT_FALSE(Number(0.0) == Number(false));
    EXPECT_TRUE(Number(1) == Number(1.0));
    EXPECT_TRUE(Number(1U) == decimal("1"));
}

struct OrderRow {
    Number less;
    Number more;
};

class NumberOrder : public testing::TestWithParam<OrderRow> {};
INSTANTIATE_TEST_SUITE_P(
    Pairs, NumberOrder,
    testing::Values(OrderRow{Number(-1), Number(0U)}, OrderRow{Number(kHighest), Number(kTwoTo63)},
                    OrderRow{Number(kHighest), Number(kHighestUnsigned)},
                    OrderRow{Number(kHighestUnsigned), Number(18446744073709551616.0)},
                    OrderRow{Number(9007199254740992.0), Number(std::int64_t{9007199254740993})},
                    OrderRow{Number(-0.5), Number(0)}, OrderRow{Number(0), Number(0.5)},
                    OrderRow{Number(-1), Number(-0.5)}, OrderRow{Number(-1.5), Number(-1)},
                    OrderRow{Number(kTwoTo63), decimal("9223372036854775808.00000000000000001")},
                    OrderRow{decimal("0.1"), Number(0.1)}, OrderRow{Number(0.3), decimal("0.3")},
                    OrderRow{Number(kHighest), decimal("123456789012345678901234567890")},
                    OrderRow{decimal("-123456789012345678901234567890"), Number(kLowest)},
                    OrderRow{decimal("123456789012345678901234567889"), decimal("123456789012345678901234567890")},
                    OrderRow{Number(1.7976931348623157e308), decimal("1e400")},
                    OrderRow{decimal("1e-400"), Number(5e-324)}, OrderRow{Number(0), decimal("1e-400")},
                    OrderRow{decimal("-1e-400"), Number(0)}, OrderRow{decimal("1e999"), Number(kInfinity)},
                    OrderRow{Number(-kInfinity), decimal("-1e999")}, OrderRow{Number(kHighestUnsigned), Number(1e300)},
                    OrderRow{Number(-1e300), Number(kLowest)}, OrderRow{Number(-kInfinity), Number(kLowest)},
                    OrderRow{Number(kNotANumber), Number(-kInfinity)}, OrderRow{Number(std::nan("")), decimal("-1")},
                    OrderRow{decimal("9"), decimal("10")}, OrderRow{decimal("-10"), decimal("-9")},
                    OrderRow{decimal("1.5"), decimal("1.55")}, OrderRow{Number(false), Number(true)}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(NumberOrder, IsThatOfTheExactValues) {
    const auto& [less, more] = GetParam();
    EXPECT_EQ(less.compare(more), std::weak_ordering::less);
    EXPECT_EQ(more.compare(less), std::weak_ordering::greater);
    EXPECT_EQ(less.compare(less), std::weak_ordering::equivalent);
    EXPECT_FALSE(less == more);
}

class SameNumber : public testing::TestWithParam<OrderRow> {};
INSTANTIATE_TEST_SUITE_P(Pairs, SameNumber,
                         testing::Values(OrderRow{Number(std::uint64_t{1} << 63U), Number(kTwoTo63)},
                                         OrderRow{Number(kLowest), Number(-kTwoTo63)},
                                         OrderRow{Number(0.0), Number(-0.0)}, OrderRow{Number(0.5), decimal("0.50")},
                                         OrderRow{Number(kLowest), decimal("-9223372036854775808")},
                                         OrderRow{Number(1e22), decimal("10000000000000000000000")},
                                         OrderRow{decimal("1e5"), Number(100000U)},
                                         OrderRow{Number(kNotANumber), Number(std::nan(""))},
                                         OrderRow{Number(5e-324), Number(std::bit_cast<double>(std::uint64_t{1}))}),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(SameNumber, IsEqualAcrossKinds) {
    EXPECT_TRUE(GetParam().less == GetParam().more);
    EXPECT_TRUE(GetParam().more == GetParam().less);
}

struct ConversionRow {
    Number number;
    std::int64_t integer;
    std::uint64_t unsignedInteger;
};

class NumberConversion : public testing::TestWithParam<ConversionRow> {};
INSTANTIATE_TEST_SUITE_P(
    Numbers, NumberConversion,
    testing::Values(ConversionRow{Number(true), 1, 1}, ConversionRow{Number(300), 300, 300},
                    ConversionRow{Number(-1), -1, kHighestUnsigned},
                    ConversionRow{Number(kHighestUnsigned), -1, kHighestUnsigned}, ConversionRow{Number(2.9), 2, 2},
                    ConversionRow{Number(-2.9), -2, kHighestUnsigned - 1},
                    ConversionRow{Number(1e300), kHighest, kHighestUnsigned},
                    ConversionRow{Number(-1e300), kLowest, std::uint64_t{1} << 63U},
                    ConversionRow{Number(kTwoTo63), kHighest, std::uint64_t{1} << 63U},
                    ConversionRow{Number(-kTwoTo63), kLowest, std::uint64_t{1} << 63U},
                    ConversionRow{Number(2 * kTwoTo63), kHighest, kHighestUnsigned},
                    ConversionRow{Number(kInfinity), kHighest, kHighestUnsigned},
                    ConversionRow{Number(std::nan("")), 0, 0}, ConversionRow{Number(kNotANumber), 0, 0},
                    ConversionRow{decimal("12.9"), 12, 12}, ConversionRow{decimal("-12.9"), -12, kHighestUnsigned - 11},
                    ConversionRow{decimal("12e3"), 12000, 12000},
                    ConversionRow{decimal("9223372036854775808"), kHighest, std::uint64_t{1} << 63U},
                    ConversionRow{decimal("-9223372036854775808"), kLowest, std::uint64_t{1} << 63U},
                    ConversionRow{decimal("-9223372036854775809"), kLowest, std::uint64_t{1} << 63U},
                    ConversionRow{decimal("18446744073709551616"), kHighest, kHighestUnsigned},
                    ConversionRow{decimal("1e999999999"), kHighest, kHighestUnsigned},
                    ConversionRow{decimal("1e-999999999"), 0, 0}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(NumberConversion, ToIntegersDropsFractionsAndStaysWithin64Bits) {
    EXPECT_EQ(GetParam().number.longLongValue(), GetParam().integer);
    EXPECT_EQ(GetParam().number.integerValue(), GetParam().integer);
    EXPECT_EQ(GetParam().number.unsignedLongLongValue(), GetParam().unsignedInteger);
    EXPECT_EQ(GetParam().number.unsignedIntegerValue(), GetParam().unsignedInteger);
}

TEST(NumberToNarrowIntegers, KeepsTheLowestBits) {
    EXPECT_EQ(Number(300).charValue(), 44);
    EXPECT_EQ(Number(200).charValue(), -56);
    EXPECT_EQ(Number(-1).unsignedCharValue(), 255);
    EXPECT_EQ(Number(70000).shortValue(), 4464);
    EXPECT_EQ(Number(-1).unsignedShortValue(), 65535);
    EXPECT_EQ(Number(3e9).intValue(), -1294967296);
    EXPECT_EQ(Number(3e9).unsignedIntValue(), 3000000000U);
    EXPECT_EQ(decimal("300.7").charValue(), 44);
    EXPECT_EQ(Number(1e300).charValue(), -1);
}

TEST(NumberToDouble, IsTheNearest) {
    EXPECT_EQ(Number(kHighestUnsigned).doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(decimal("0.1").doubleValue(), 0.1);
    EXPECT_EQ(decimal("1e400").doubleValue(), kInfinity);
    EXPECT_EQ(decimal("-1e400").doubleValue(), -kInfinity);
    EXPECT_EQ(decimal("1e-400").doubleValue(), 0.0);
    EXPECT_TRUE(std::isnan(Number(kNotANumber).doubleValue()));
    EXPECT_EQ(Number(true).doubleValue(), 1.0);
}

struct LongDecimal {
    const char* text;
    double nearest;
};

class NumberOfManyDigits : public testing::TestWithParam<LongDecimal> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, NumberOfManyDigits,
    testing::Values(
        // Halfway between 1 and the next double, and a trifle above and below.
        LongDecimal{"1.00000000000000011102230246251565404236316680908203125", 1.0},
        LongDecimal{"-1.00000000000000011102230246251565404236316680908203125", -1.0},
        LongDecimal{"1.00000000000000011102230246251565404236316680908203126", 1.0000000000000002},
        LongDecimal{"1.00000000000000011102230246251565404236316680908203124", 1.0},
        // Halfway between 1.0000000000000002 and the next: goes up to the even one.
        LongDecimal{"1.00000000000000033306690738754696212708950042724609375", 1.0000000000000004},
        LongDecimal{"1.00000000000000033306690738754696212708950042724609374", 1.0000000000000002},
        LongDecimal{"9007199254740993.00000000000000000000000000001", 9007199254740994.0},
        LongDecimal{"9007199254740993.00000000000000000000000000000", 9007199254740992.0},
        // The end of the doubles' range: from halfway to the double that there would be next, infinite.
        LongDecimal{"1797693134862315807937289714053034150799341327100378269361737789804449682927647509466490179775872"
                    "0709633028641669288791094655554785194040263065748867150582068190890200070838367627385484581771153"
                    "1764475730270069855571366959622842914819860834936475292719074168444365510704342711559699508093042"
                    "880177904174497792",
                    kInfinity},
        LongDecimal{"1797693134862315807937289714053034150799341327100378269361737789804449682927647509466490179775872"
                    "0709633028641669288791094655554785194040263065748867150582068190890200070838367627385484581771153"
                    "1764475730270069855571366959622842914819860834936475292719074168444365510704342711559699508093042"
                    "880177904174497791",
                    std::numeric_limits<double>::max()}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(NumberOfManyDigits, IsRoundedToADoubleOnce) {
    EXPECT_EQ(decimal(GetParam().text).doubleValue(), GetParam().nearest);
}

TEST(NumberOfManyDigits, IsRoundedToAFloatOnce) {
    // Halfway between 1 and the next float, 39 digits and more.
    EXPECT_EQ(decimal("1.00000005960464477539062500000000000000000").floatValue(), 1.0F);
    EXPECT_EQ(decimal("1.00000005960464477539062500000000000000001").floatValue(), 1.00000012F);
    EXPECT_EQ(decimal("1.00000005960464477539062499999999999999999").floatValue(), 1.0F);
}

TEST(NumberToFloat, IsTheNearestOrInfinite) {
    constexpr float kMost = std::numeric_limits<float>::max();
    EXPECT_EQ(Number(0.1).floatValue(), 0.1F);
    EXPECT_EQ(Number(16777217).floatValue(), 16777216.0F);
    EXPECT_EQ(Number(1e300).floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(Number(-1e300).floatValue(), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(Number(340282356779733623858607532500980858880.0).floatValue(), kMost);
    EXPECT_EQ(Number(-340282356779733623858607532500980858880.0).floatValue(), -kMost);
    EXPECT_EQ(Number(340282356779733661637539395458142568448.0).floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(decimal("0.1").floatValue(), 0.1F);
    EXPECT_TRUE(std::isnan(Number(std::nan("")).floatValue()));
}

TEST(NumberToBool, IsFalseForZeroAlone) {
    EXPECT_FALSE(Number(0).boolValue());
    EXPECT_FALSE(Number(0U).boolValue());
    EXPECT_FALSE(Number(-0.0).boolValue());
    EXPECT_FALSE(decimal("0.00").boolValue());
    EXPECT_FALSE(Number(false).boolValue());
    EXPECT_TRUE(Number(-1).boolValue());
    EXPECT_TRUE(Number(0.001).boolValue());
    EXPECT_TRUE(decimal("1e-400").boolValue());
}

struct TextRow {
    Number number;
    const char* text;
};

class NumberText : public testing::TestWithParam<TextRow> {};
INSTANTIATE_TEST_SUITE_P(
    Numbers, NumberText,
    testing::Values(TextRow{Number(42), "42"}, TextRow{Number(kLowest), "-9223372036854775808"},
                    TextRow{Number(kHighestUnsigned), "18446744073709551615"}, TextRow{Number(0.1), "0.1"},
                    TextRow{Number(1.0), "1"}, TextRow{Number(100000.0), "100000"}, TextRow{Number(-0.0), "-0"},
                    TextRow{Number(9007199254740991.0), "9007199254740991"},
                    TextRow{Number(9007199254740992.0), "9.007199254740992e+15"}, TextRow{Number(1e300), "1e+300"},
                    TextRow{Number(5e-324), "5e-324"}, TextRow{Number(0.5), "0.5"}, TextRow{Number(-0.05), "-0.05"},
                    TextRow{Number(1234.5678), "1234.5678"}, TextRow{Number(0.0001), "0.0001"},
                    TextRow{Number(99999999999.9999), "99999999999.9999"},
                    TextRow{Number(100000000000.5), "100000000000.5"}, TextRow{Number(0.00005), "5e-05"},
                    TextRow{Number(0.30000000000000004), "0.30000000000000004"},
                    TextRow{Number(1.0000000000000002), "1.0000000000000002"}, TextRow{Number(2.675), "2.675"},
                    TextRow{Number(0.1F), "0.10000000149011612"}, TextRow{decimal("12.5"), "12.5"},
                    TextRow{Number(kNotANumber), "NaN"}, TextRow{Number(true), "1"}, TextRow{Number(false), "0"},
                    TextRow{Number(kInfinity), "inf"}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(NumberText, IsTheShortestThatMeansTheNumber) {
    EXPECT_EQ(GetParam().number.stringValue(), GetParam().text);
}

TEST(NumberText, IsReadBackForEveryNumberOfFewDecimals) {
    for (std::int64_t scaled = -200'000; scaled <= 200'000; scaled += 7) {
        for (const double power : {10.0, 100.0, 1000.0, 10000.0, 1e9}) {
            const double value = static_cast<double>(scaled) / power;
            const std::string text = Number(value).stringValue();
            ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
            char shortest[32];
            const auto end = std::to_chars(shortest, shortest + sizeof shortest, value, std::chars_format::fixed).ptr;
            if (text.find('e') != std::string::npos) continue;
            ASSERT_EQ(text, std::string(shortest, end));
        }
    }
}

TEST(DecimalNumber, SkipsSpaceAndIgnoresWhatFollows) {
    EXPECT_TRUE(decimal(" \t\n12.5 V") == decimal("12.5"));
    EXPECT_TRUE(decimal("abc").isNotANumber());
    EXPECT_TRUE(decimal("").isNotANumber());
    EXPECT_TRUE(decimal("1e99999999999").isNotANumber());
}

TEST(DecimalNumber, KeepsThirtyEightDigits) {
    const std::string text = "1234567890123456789012345678901234567.8";
    EXPECT_EQ(decimal(text).stringValue(), text);
}

TEST(NumberDeathTest, StopsTheProcessWhenAskedForAnotherKind) {
    EXPECT_DEATH(static_cast<void>(Number(1).floating()), "");
    EXPECT_DEATH(static_cast<void>(Number(1.5).integer()), "");
    EXPECT_DEATH(static_cast<void>(Number(1).unsignedInteger()), "");
    EXPECT_DEATH(static_cast<void>(Number(1).decimal()), "");
}

}  // namespace
}  // namespace kestrav
