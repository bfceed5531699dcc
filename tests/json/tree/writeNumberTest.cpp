#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "json/tree/writeNumber.h"

namespace kestrav {
namespace {

/// How many numbers are tried. The long run is for changes to the reading or writing of numbers:
///     KESTRAV_NUMBERS=10000000 build/release/tests/json_tree_test --gtest_filter='AnyDouble.*'
std::size_t tries() {
    const char* asked = std::getenv("KESTRAV_NUMBERS");
    return asked == nullptr ? 20'000 : static_cast<std::size_t>(std::strtoull(asked, nullptr, 10));
}

double anyDouble(std::mt19937_64& engine) {
    for (;;) {
        const auto value = std::bit_cast<double>(static_cast<std::uint64_t>(engine()));
        if (std::isfinite(value)) return value;
    }
}

/// As people write them: some digits, a few of them behind the point.
double usualDouble(std::mt19937_64& engine) {
    const auto digits = static_cast<double>(engine() >> (11 + engine() % 53));
    return digits / std::pow(10.0, static_cast<double>(engine() % 20)) * (engine() % 2 == 0 ? 1 : -1);
}

std::string written(double value) {
    char text[kNumberText];
    return {text, writeNumber(value, text)};
}

/// What the standard library finds to be the shortest, in the form that writeNumber() promises.
std::string expectedText(double value) {
    char text[1200];
    const bool isLarge = std::fabs(value) >= 0x1p53;
    const auto end = isLarge ? std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr
                             : std::to_chars(text, text + sizeof text, value).ptr;
    const std::string shortest(text, end);
    // Few digits behind the point, and whole numbers, are plain even where an exponent is shorter.
    const std::string plain(text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed).ptr);
    const std::size_t point = plain.find('.');
    const bool isPlain = point == std::string::npos || plain.size() - point - 1 <= 4;
    return !isLarge && isPlain ? plain : shortest;
}

std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

double readAgain(const std::string& text) {
    const auto result = readJSON(text, ReadingOptions::allowFragments);
    const Tree* tree = std::get_if<Tree>(&result);
    return tree == nullptr || !tree->number() ? std::nan("") : tree->number()->doubleValue();
}

void expectRoundTrip(double value) {
    const std::string text = written(value);
    ASSERT_EQ(text, expectedText(value));
    const double again = readAgain(text);
    // A whole number is read as an integer, which has no sign when it is zero but the one that "-0" keeps.
    ASSERT_EQ(bitsOf(again), bitsOf(value)) << text;
}

TEST(AnyDouble, IsWrittenShortestAndReadBack) {
    std::mt19937_64 engine(4310);
    for (std::size_t count = tries(); count > 0; --count) {
        expectRoundTrip(anyDouble(engine));
        expectRoundTrip(usualDouble(engine));
    }
}

TEST(AnyDouble, AtTheEdgesIsWrittenShortestAndReadBack) {
    for (int exponent = 0; exponent < 2047; ++exponent) {
        const std::uint64_t power = std::uint64_t(exponent) << 52U;
        for (const std::uint64_t bits : {power, power + 1, power + 2, power | 0x000FFFFFFFFFFFFFU})
            expectRoundTrip(std::bit_cast<double>(bits));
    }
    for (int power = -330; power < 309; ++power)
        expectRoundTrip(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr));
}

void expectSameAsLibrary(const std::string& text) {
    double expected = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), expected).ec != std::errc{}) return;
    ASSERT_EQ(bitsOf(expected), bitsOf(std::strtod(text.c_str(), nullptr))) << text;
    ASSERT_EQ(bitsOf(readAgain(text)), bitsOf(expected)) << text;
}

TEST(AnyDouble, IsReadAsTheNearestFromAnyNumberOfDigits) {
    std::mt19937_64 engine(2024);
    for (std::size_t count = tries(); count > 0; --count) {
        const std::size_t digits = 1 + engine() % 45;
        std::string text = engine() % 2 == 0 ? "-" : "";
        text += static_cast<char>('1' + engine() % 9);
        for (std::size_t digit = 1; digit < digits; ++digit) {
            if (digit == 1) text += '.';
            text += static_cast<char>('0' + engine() % 10);
        }
        text += 'e' + std::to_string(static_cast<int>(engine() % 640) - 330);
        expectSameAsLibrary(text);
    }
}

/// The number halfway between a double and the next, in all its digits, and its neighbours.
TEST(AnyDouble, IsReadAsTheNearestWhereTwoAreEquallyNear) {
    std::mt19937_64 engine(53);
    for (std::size_t count = tries() / 4; count > 0; --count) {
        const double value = std::fabs(usualDouble(engine));
        const double next = std::nextafter(value, INFINITY);
        // As long doubles both have one more bit, so what lies between them is exact.
        const long double middle = (static_cast<long double>(value) + static_cast<long double>(next)) / 2;
        char text[1200];
        const int size = std::snprintf(text, sizeof text, "%.120Lf", middle);
        std::string digits(text, static_cast<std::size_t>(size));
        expectSameAsLibrary(digits);
        expectSameAsLibrary(digits + "1");
        for (const int places : {17, 18, 19, 20, 25, 40}) {
            const std::size_t point = digits.find('.');
            expectSameAsLibrary(digits.substr(0, point + 1 + static_cast<std::size_t>(places)));
        }
    }
}

TEST(AnyInteger, IsWrittenAndReadBack) {
    std::mt19937_64 engine(64);
    for (std::size_t count = tries(); count > 0; --count) {
        const auto value = static_cast<std::int64_t>(engine()) >> (engine() % 64);
        const auto unsignedValue = std::uint64_t{engine()} >> (engine() % 64);
        char text[kNumberText];
        const std::string own(text, writeNumber(value, text));
        ASSERT_EQ(own, std::to_string(value));
        ASSERT_EQ(std::get<Tree>(readJSON(own, ReadingOptions::allowFragments)), Tree(value));
        const std::string ownUnsigned(text, writeNumber(unsignedValue, text));
        ASSERT_EQ(ownUnsigned, std::to_string(unsignedValue));
        ASSERT_EQ(std::get<Tree>(readJSON(ownUnsigned, ReadingOptions::allowFragments)), Tree(unsignedValue));
    }
}

TEST(AnyInteger, NextToAPowerOfTenIsWrittenAndReadBack) {
    std::uint64_t power = 1;
    for (int digits = 1; digits <= 20; ++digits) {
        for (const std::uint64_t value : {power - 1, power, power + 1}) {
            char text[kNumberText];
            ASSERT_EQ(std::string(text, writeNumber(value, text)), std::to_string(value));
        }
        power *= 10;
    }
}

}  // namespace
}  // namespace kestrav
