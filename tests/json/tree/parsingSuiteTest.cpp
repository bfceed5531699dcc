// The public suite of documents that readers of JSON are judged by: parsing_suite.txt beside this file, and the two
// largest ones, which are made here.

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "tests/places.h"

namespace kestrav {
namespace {

struct SuiteDocument {
    bool taken;
    std::string name;
    std::string bytes;
};

/// "%XX" stands for a byte.
std::string decoded(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isCoded = text[at] == '%';
        bytes += isCoded ? static_cast<char>(std::stoi(std::string(text.substr(at + 1, 2)), nullptr, 16)) : text[at];
        at += isCoded ? 2 : 0;
    }
    return bytes;
}

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int time = 0; time < times; ++time)
        all += text;
    return all;
}

std::vector<SuiteDocument> suite() {
    std::vector<SuiteDocument> documents{
        {false, "n_structure_100000_opening_arrays", repeated("[", 100'000)},
        {false, "n_structure_open_array_object", repeated(R"([{"":)", 50'000) + '\n'},
    };
    std::ifstream file(places::ofSource("tests/json/tree/parsing_suite.txt"));
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        const std::size_t space = std::min(line.find(' ', 2), line.size());
        documents.push_back({line.starts_with('+'), line.substr(2, space - 2),
                             decoded(std::string_view(line).substr(std::min(space + 1, line.size())))});
    }
    return documents;
}

TEST(ParsingSuite, IsComplete) {
    const auto documents = suite();
    EXPECT_EQ(documents.size(), 318U);
    EXPECT_EQ(std::ranges::count(documents, true, &SuiteDocument::taken), 104);
}

TEST(ParsingSuite, IsJudgedAsTheStandardDoes) {
    for (const SuiteDocument& document : suite()) {
        const auto result = readJSON(document.bytes, ReadingOptions::allowFragments);
        EXPECT_EQ(std::holds_alternative<Tree>(result), document.taken) << document.name;
    }
}

TEST(ParsingSuite, IsReadBackFromWhatIsWritten) {
    for (const SuiteDocument& document : suite()) {
        const auto result = readJSON(document.bytes);
        const Tree* tree = std::get_if<Tree>(&result);
        if (tree == nullptr) continue;
        for (const auto options : {WritingOptions::none, WritingOptions::prettyPrinted}) {
            const auto again = readJSON(dataWithJSONObject(*tree, options));
            ASSERT_TRUE(std::holds_alternative<Tree>(again)) << document.name;
            EXPECT_TRUE(std::get<Tree>(again) == *tree) << document.name;
        }
    }
}

}  // namespace
}  // namespace kestrav
