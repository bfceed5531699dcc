#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "json/value/URL.h"

namespace kestrav::json {
namespace {

using namespace std::string_view_literals;
using testing::Values;

class WellFormedURL : public testing::TestWithParam<std::string_view> {};
INSTANTIATE_TEST_SUITE_P(Texts, WellFormedURL,
                         Values("a", "/", "//", "///", "?", "#", "http:", "http:?#", "A+1-.:x", "http://a", "//a:80",
                                "//a:", "//u:p@a:80/b;c/d?e/?f#g/?h", "//@", "//:@:", "//1.2.3.4",
                                "//1.2.3.4.example.org", "//999.1.1.1", "//[::1]:80/", "//[1:2:3:4:5:6:7::]",
                                "//[::ffff:1.2.3.4]", "//[v1.a:b]", "//[VaF.~]", "a%20b", "//a%2Fb/", "./a:b", "a/b:c",
                                "?a:b", "#a:b", "mailto:a@example.org", "a//b", "http:a", "-._~!$&'()*+,;=@"),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(WellFormedURL, KeepsItsText) {
    const auto url = URL::parse(GetParam());
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->absoluteString(), GetParam());
}

class MalformedURL : public testing::TestWithParam<std::string_view> {};
INSTANTIATE_TEST_SUITE_P(Texts, MalformedURL,
                         Values("", ":", "1a:b", "a_b:c", ":a", "a b", "a\0b"sv, "a\nb", "caf\xC3\xA9", "%", "%2",
                                "%2g", "a%g0", "\"", "<", "[", "]", "^", "`", "{", "|", "\\", "##", "#[", "?[",
                                "//a:b/", "//a:80b", "//a:1:2", "//a@b@c", "//[", "//]", "//[]", "//[::1", "//[::1]a",
                                "//[::1]:a", "//[1::2::3]", "//[::1%25lo]", "//[::1\0]"sv, "//[::12345]",
                                "//[1:2:3:4:5:6:7:8:9]", "//[v.a]", "//[v1.]", "//[vg.a]", "//[v1.%20]", "//[v1.@]",
                                "//[1.2.3.4]", "//u[@a", "//a[b"),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(MalformedURL, IsNone) {
    EXPECT_FALSE(URL::parse(GetParam()).has_value());
}

}  // namespace
}  // namespace kestrav::json
