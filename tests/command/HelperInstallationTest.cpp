#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/HelperInstallation.h"
#include "command/SMJError.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/FakeAuthorization.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BlessHelper : public testing::Test {
  protected:
    FakeAuthorization authorization_;
    RecordingLog log_;
    HelperInstallation installation_{authorization_, log_};
    std::optional<AuthorizationRef> authRef_;
};

using AuthorizeWithCmd = BlessHelper;

TEST_F(BlessHelper, AsksOnceForTheRightToInstallAHelper) {
    installation_.blessHelper(authRef_);
    ASSERT_EQ(authorization_.asked.size(), 1U);
    EXPECT_THAT(authorization_.asked[0].rights,
                ElementsAre(AuthorizationItem{"com.apple.ServiceManagement.blesshelper", "", 0}));
}

TEST_F(BlessHelper, MayInteractExtendAndPreAuthorize) {
    installation_.blessHelper(authRef_);
    ASSERT_EQ(authorization_.asked.size(), 1U);
    EXPECT_EQ(authorization_.asked[0].flags, 19U);
}

TEST_F(BlessHelper, InstallsTheHelperUnderItsLabelInTheSystemDomain) {
    EXPECT_TRUE(installation_.blessHelper(authRef_));
    ASSERT_EQ(authorization_.helpers.size(), 1U);
    const auto& [label, helper] = *authorization_.helpers.begin();
    EXPECT_EQ(label, "com.corvatel.KestravHelper");
    EXPECT_EQ(helper.domain, JobDomain::systemLaunchd);
    EXPECT_EQ(helper.handle, authRef_);
}

TEST_F(BlessHelper, KeepsTheConsentAndLogsSuccessOnce) {
    EXPECT_TRUE(installation_.blessHelper(authRef_));
    EXPECT_EQ(authRef_, AuthorizationRef{1});
    EXPECT_THAT(log_.entries(), ElementsAre("Installed successfully!"));
}

TEST_F(BlessHelper, InstallsAgainAtEveryLaunch) {
    EXPECT_TRUE(installation_.blessHelper(authRef_));
    EXPECT_TRUE(installation_.blessHelper(authRef_));
    EXPECT_EQ(authorization_.asked.size(), 2U);
    EXPECT_EQ(authorization_.helpers.begin()->second.handle, AuthorizationRef{2});
}

TEST_F(BlessHelper, RaisesTheStatusAndForgetsTheHandleWithoutConsent) {
    authRef_ = AuthorizationRef{77};
    authorization_.createStatus = -60006;
    try {
        installation_.blessHelper(authRef_);
        FAIL() << "nothing was raised";
    } catch (const SMJError& error) {
        EXPECT_EQ(error.kind(), SMJError::Case::authorizationFailed);
        EXPECT_EQ(error.status(), -60006);
    }
    EXPECT_FALSE(authRef_.has_value());
    EXPECT_THAT(authorization_.helpers, IsEmpty());
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(BlessHelper, RaisesTheInstallersErrorAndKeepsTheConsent) {
    authorization_.blesses = false;
    authorization_.blessError = BlessingError("The disk is full.");
    try {
        installation_.blessHelper(authRef_);
        FAIL() << "nothing was raised";
    } catch (const BlessingError& error) {
        EXPECT_STREQ(error.what(), "The disk is full.");
    }
    EXPECT_EQ(authRef_, AuthorizationRef{1});
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(BlessHelper, BelievesTheAnswerRatherThanAnErrorThatIsLeftOver) {
    authorization_.blessError = BlessingError("only a warning");
    EXPECT_TRUE(installation_.blessHelper(authRef_));
}

using BlessHelperDeathTest = BlessHelper;

TEST_F(BlessHelperDeathTest, StopsWhenTheInstallerFailsWithoutAnError) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    authorization_.blesses = false;
    EXPECT_EXIT(installation_.blessHelper(authRef_), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(AuthorizeWithCmd, AsksForNoRightsAndMayInteractAndExtend) {
    EXPECT_TRUE(installation_.authorizeWithCmd("dd", authRef_));
    ASSERT_EQ(authorization_.asked.size(), 1U);
    EXPECT_THAT(authorization_.asked[0].rights, IsEmpty());
    EXPECT_EQ(authorization_.asked[0].flags, 3U);
}

TEST_F(AuthorizeWithCmd, RegistersTheRightInItsOtherSpelling) {
    EXPECT_TRUE(installation_.authorizeWithCmd("dd", authRef_));
    ASSERT_EQ(authorization_.rights.size(), 1U);
    const auto& [name, right] = *authorization_.rights.begin();
    EXPECT_EQ(name, "com.corvitel.KestravHelper");
    EXPECT_EQ(right.rule, "authenticate-admin");
    EXPECT_EQ(right.descriptionKey, "Authorize disk access");
    EXPECT_EQ(right.handle, authRef_);
}

TEST_F(AuthorizeWithCmd, LogsTheStatusAndKeepsTheHandle) {
    EXPECT_TRUE(installation_.authorizeWithCmd("dd", authRef_));
    EXPECT_EQ(authRef_, AuthorizationRef{1});
    EXPECT_THAT(log_.entries(), ElementsAre("Authorization result: 0"));
}

TEST_F(AuthorizeWithCmd, DoesNothingMoreWithoutAuthorization) {
    authorization_.createStatus = -60008;
    EXPECT_FALSE(installation_.authorizeWithCmd("dd", authRef_));
    EXPECT_THAT(log_.entries(), ElementsAre("Authorization result: -60008"));
    EXPECT_THAT(authorization_.rights, IsEmpty());
    EXPECT_FALSE(authRef_.has_value());
}

TEST_F(AuthorizeWithCmd, IsTrueWhateverCameOfRegisteringTheRight) {
    authorization_.setRightStatus = -60005;
    EXPECT_TRUE(installation_.authorizeWithCmd("dd", authRef_));
}

using AuthorizeWithCmdDeathTest = BlessHelper;

TEST_F(AuthorizeWithCmdDeathTest, StopsWhenAnAuthorizationHasNoHandle) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    authorization_.givesHandle = false;
    EXPECT_EXIT(installation_.authorizeWithCmd("dd", authRef_), testing::KilledBySignal(SIGABRT), "");
}

TEST(HelperCommandItem, NamesTheHelperAndCarriesTheCommandsBytes) {
    const AuthorizationItem item = helperCommandItem("größe");
    EXPECT_EQ(item.name, "com.corvatel.KestravHelper");
    EXPECT_EQ(item.value.size(), 7U);
    EXPECT_EQ(item.value, "größe");
    EXPECT_EQ(item.flags, 0U);
}

TEST(SMJError, KeepsItsCasesInOrder) {
    using enum SMJError::Case;
    const SMJError::Case order[] = {badBundleSecurity,   unableToBless,         authorizationFailed,
                                    bundleNotFound,      unsignedBundle,        badBundleCodeSigningDictionary,
                                    authorizationDenied, authorizationCanceled, authorizationInteractionNotAllowed};
    int number = 0;
    for (const auto kind : order)
        EXPECT_EQ(static_cast<int>(kind), number++);
}

struct CaseRow {
    SMJError error;
    SMJError::Case kind;
    std::optional<std::int32_t> status;
    std::string description;
};

class SMJErrorCase : public testing::TestWithParam<CaseRow> {};

TEST_P(SMJErrorCase, SaysWhatHappenedInASentence) {
    const auto& [error, kind, status, description] = GetParam();
    EXPECT_EQ(error.kind(), kind);
    EXPECT_EQ(error.status(), status);
    EXPECT_EQ(std::string(error.what()), description);
}

using enum SMJError::Case;
const std::string kNotInstalled = "The helper was not installed: ";

INSTANTIATE_TEST_SUITE_P(
    All, SMJErrorCase,
    testing::Values(
        CaseRow{SMJError::badBundleSecurity(-1), badBundleSecurity, -1,
                "The helper's files can't be trusted (status -1)."},
        CaseRow{SMJError::unableToBless(BlessingError("no room.")),
                unableToBless,
                {},
                "The helper could not be installed: no room."},
        CaseRow{SMJError::bundleNotFound(), bundleNotFound, {}, "The helper's files were not found."},
        CaseRow{SMJError::unsignedBundle(), unsignedBundle, {}, "The helper's files are not signed."},
        CaseRow{SMJError::badBundleCodeSigningDictionary(),
                badBundleCodeSigningDictionary,
                {},
                "The signature of the helper's files can't be read."},
        CaseRow{SMJError::authorizationDenied(), authorizationDenied, {}, "An administrator's consent was denied."},
        CaseRow{SMJError::authorizationCanceled(),
                authorizationCanceled,
                {},
                "The request for an administrator's consent was dismissed."},
        CaseRow{SMJError::authorizationInteractionNotAllowed(),
                authorizationInteractionNotAllowed,
                {},
                "Nobody may be asked for an administrator's consent here."},
        CaseRow{SMJError::authorizationFailed(-60005), authorizationFailed, -60005,
                kNotInstalled + "an administrator's password was not given or was wrong, or a rule of this computer "
                                "forbids it (status -60005)."},
        CaseRow{SMJError::authorizationFailed(-60006), authorizationFailed, -60006,
                kNotInstalled + "the request for an administrator's password was dismissed (status -60006)."},
        CaseRow{SMJError::authorizationFailed(-60007), authorizationFailed, -60007,
                kNotInstalled + "nothing can ask for an administrator's password here, because no authentication agent "
                                "runs in this session (status -60007)."},
        CaseRow{SMJError::authorizationFailed(-60008), authorizationFailed, -60008,
                kNotInstalled + "the authorization service (polkit) does not answer (status -60008)."},
        CaseRow{SMJError::authorizationFailed(-60031), authorizationFailed, -60031,
                kNotInstalled + "the program pkexec, which asks for an administrator's password, can't be run; install "
                                "it (status -60031)."},
        CaseRow{SMJError::authorizationFailed(-60032), authorizationFailed, -60032,
                kNotInstalled + "the helper's installer kestrav-bless is missing; install Kestrav again (status "
                                "-60032)."},
        CaseRow{SMJError::authorizationFailed(7), authorizationFailed, 7,
                kNotInstalled + "the authorization service failed (status 7)."}));

}  // namespace
}  // namespace kestrav
