// Which rights a user has, by the user database of a test's own.

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "services/image/UserRights.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"

namespace kestrav {
namespace {

using testing::Contains;
using testing::SizeIs;

constexpr uid_t kMember = 4721;
constexpr int kFirstGroup = 50'000;

class RightsOfAUser : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
    }

    std::optional<Sandbox> room_;
};

TEST_F(RightsOfAUser, HaveAllGroupsHoweverMany) {
    addAccount("kestrav-member", kMember, false);
    std::ofstream groups("/etc/group", std::ios::app);
    for (int i = 0; i < 300; ++i)
        groups << "kestrav" << i << ":x:" << kFirstGroup + i << ":kestrav-member\n";
    groups.close();
    const auto rights = rightsOf(kMember);
    ASSERT_TRUE(rights) << rights.problem().sentence;
    EXPECT_EQ(rights.value().uid, kMember);
    EXPECT_EQ(rights.value().gid, gid_t{kMember});
    EXPECT_THAT(rights.value().groups, SizeIs(301));
    EXPECT_THAT(rights.value().groups, Contains(gid_t{kFirstGroup + 299}));
}

TEST_F(RightsOfAUser, AreFoundHoweverLongTheAccountIs) {
    std::ofstream("/etc/passwd", std::ios::app)
        << "kestrav-member:x:" << kMember << ":100:" << std::string(20'000, 'n') << ":/nonexistent:/bin/sh\n";
    const auto rights = rightsOf(kMember);
    ASSERT_TRUE(rights) << rights.problem().sentence;
    EXPECT_EQ(rights.value().gid, 100U);
}

TEST_F(RightsOfAUser, AreNoneOfWhoHasNoAccount) {
    const auto rights = rightsOf(3'999'999'999);
    ASSERT_FALSE(rights);
    EXPECT_EQ(rights.problem().sentence, "the system does not know a user with the number 3999999999.");
}

}  // namespace
}  // namespace kestrav
