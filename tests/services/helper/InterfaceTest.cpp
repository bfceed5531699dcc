// The helper's interface as other programs find it described, and as the running helper describes it.
#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/places.h"
#include "tests/services/helper/RunningHelper.h"

namespace kestrav {
namespace {

constexpr const char* kPath = "/com/corvatel/KestravHelper";

/// The tags of the helper's own interface, each with its attributes in the order of their names.
std::vector<std::string> interfaceTags(const std::string& introspection) {
    const std::string text = std::regex_replace(introspection, std::regex("<!--[^]*?-->"), "");
    const std::size_t begin = text.find("<interface name=\"com.corvatel.KestravHelper\"");
    if (begin == std::string::npos) return {};
    const std::string own = text.substr(begin, text.find("</interface>", begin) - begin);
    const std::regex tag("<(/?\\w+)([^>]*?)/?>");
    const std::regex attribute("\\w+=\"[^\"]*\"");
    std::vector<std::string> tags;
    for (std::sregex_iterator at(own.begin(), own.end(), tag), end; at != end; ++at) {
        const std::string attributes = (*at)[2];
        std::vector<std::string> words;
        for (std::sregex_iterator one(attributes.begin(), attributes.end(), attribute); one != end; ++one)
            words.push_back(one->str());
        std::ranges::sort(words);
        std::string line = (*at)[1];
        for (const std::string& word : words)
            line += " " + word;
        tags.push_back(line);
    }
    return tags;
}

TEST_F(Helper, IsTheInterfaceThatItsDescriptionSays) {
    startDaemons("YES");
    startHelper();
    const ProgramRun told =
        runProgram({"/usr/bin/dbus-send", "--system", "--print-reply=literal", "--dest=com.corvatel.KestravHelper",
                    kPath, "org.freedesktop.DBus.Introspectable.Introspect"});
    ASSERT_EQ(told.exitStatus, 0) << told.err;
    std::ostringstream described;
    described << std::ifstream(places::ofSource("packaging/dbus/com.corvatel.KestravHelper.xml")).rdbuf();
    const auto wanted = interfaceTags(described.str());
    EXPECT_EQ(wanted.size(), 6U);
    EXPECT_EQ(interfaceTags(told.out), wanted) << told.out;
}

}  // namespace
}  // namespace kestrav
