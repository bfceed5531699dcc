#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/ViewController.h"
#include "tests/app/fakes/ControllerOnFakes.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ViewController, StartsWithItsInitialValues) {
    const ControllerOnFakes its;
    const ViewController& controller = *its.controller;
    EXPECT_EQ(controller.logBox(), nullptr);
    EXPECT_EQ(controller.logText(), nullptr);
    EXPECT_EQ(controller.processFirmwareBtn(), nullptr);
    EXPECT_EQ(controller.processIconBtn(), nullptr);
    EXPECT_NE(controller.driver(), nullptr);
    EXPECT_EQ(controller.loaderBar(), nullptr);
    EXPECT_EQ(controller.targetFilename(), std::nullopt);
    EXPECT_FALSE(controller.authorized());
    EXPECT_EQ(controller.authRef(), std::nullopt);
    EXPECT_FALSE(controller.bless());
}

TEST(ViewController, MakesAnEngineThatNobodyHasTouched) {
    const ControllerOnFakes its;
    EXPECT_EQ(its.controller->driver()->vendorID(), 4310);
    EXPECT_EQ(its.controller->driver()->productID(), 64769);
    EXPECT_EQ(its.controller->driver()->parent(), nullptr);
}

TEST(ViewController, KeepsWhatItsSettersAreGiven) {
    ControllerOnFakes its;
    ViewController& controller = *its.controller;
    its.load();
    EXPECT_EQ(controller.logBox(), its.view.logBox);
    EXPECT_EQ(controller.logText(), its.view.logText);
    EXPECT_EQ(controller.processFirmwareBtn(), its.view.firmwareButton);
    EXPECT_EQ(controller.processIconBtn(), its.view.iconButton);
    EXPECT_EQ(controller.loaderBar(), its.view.indicator);
    controller.setTargetFilename("/x.fds");
    EXPECT_EQ(controller.targetFilename(), "/x.fds");
    controller.setAuthorized(true);
    EXPECT_TRUE(controller.authorized());
    controller.setAuthRef(AuthorizationRef{7});
    EXPECT_EQ(controller.authRef(), AuthorizationRef{7});
    controller.setBless(true);
    EXPECT_TRUE(controller.bless());
}

TEST(ViewController, TakesAnotherEngine) {
    ControllerOnFakes its;
    const auto other = std::make_shared<KestravDevice>(its.registry, its.volumes, its.disks, its.commands, its.console);
    const auto first = its.controller->driver();
    its.controller->setDriver(other);
    its.load();
    EXPECT_EQ(its.controller->driver(), other);
    EXPECT_EQ(other->parent(), its.controller);
    EXPECT_EQ(first->parent(), nullptr);
}

TEST(ViewController, HoldsTheTextAndTheEngineAloneStrongly) {
    ControllerOnFakes its;
    its.load();
    its.view.logBox.reset();
    its.view.logText.reset();
    its.view.firmwareButton.reset();
    its.view.iconButton.reset();
    its.view.indicator.reset();
    EXPECT_EQ(its.controller->logBox(), nullptr);
    EXPECT_NE(its.controller->logText(), nullptr);
    EXPECT_EQ(its.controller->processFirmwareBtn(), nullptr);
    EXPECT_EQ(its.controller->processIconBtn(), nullptr);
    EXPECT_EQ(its.controller->loaderBar(), nullptr);
}

TEST(ViewDidLoad, AsksForTheWindowsSize) {
    ControllerOnFakes its;
    its.controller->viewDidLoad();
    EXPECT_EQ(its.view.width, 480);
    EXPECT_EQ(its.view.height, 270);
}

TEST(ViewDidLoad, TakesTheEnginesLinesAndReleasesWhoeverDidBefore) {
    ControllerOnFakes its;
    const auto before = std::make_shared<ViewController>(
        its.view, EngineParts{its.registry, its.volumes, its.disks, its.commands}, its.installation, its.console);
    its.controller->driver()->setParent(before);
    its.controller->viewDidLoad();
    EXPECT_EQ(its.controller->driver()->parent(), its.controller);
    EXPECT_EQ(before.use_count(), 1);
}

TEST(Log, EndsEveryLineWithCarriageReturnAndLineFeed) {
    ControllerOnFakes its;
    its.load();
    its.controller->log("a");
    its.controller->log("");
    its.controller->log("b");
    EXPECT_EQ(its.view.logText->string(), "a\r\n\r\nb\r\n");
    EXPECT_TRUE(its.view.logText->showsTheEnd);
}

TEST(Log, TakesALineAsItIs) {
    ControllerOnFakes its;
    its.load();
    its.controller->log("100 %s %n\n\t<b>ü</b>");
    EXPECT_EQ(its.view.logText->string(), "100 %s %n\n\t<b>ü</b>\r\n");
}

TEST(Log, GoesToTheViewAlone) {
    ControllerOnFakes its;
    its.load();
    its.controller->log("a");
    EXPECT_EQ(its.console.str(), "");
    EXPECT_THAT(its.systemLog.entries(), IsEmpty());
}

TEST(Log, GoesToTheConsoleBeforeThereIsAView) {
    ControllerOnFakes its;
    its.controller->log("a");
    its.controller->log("");
    EXPECT_EQ(its.console.str(), "a\n\n");
    EXPECT_EQ(its.view.logText->string(), "");
}

TEST(LogDeathTest, StopsTheProcessWhenTheTextCannotBeRead) {
    ControllerOnFakes its;
    its.load();
    its.view.logText->readable = false;
    EXPECT_EXIT(its.controller->log("a"), ::testing::KilledBySignal(SIGABRT), "");
}

TEST(AuthorizeWithCmd, ObtainsAConsentWithoutRightsAndRegistersTheRight) {
    ControllerOnFakes its;
    EXPECT_TRUE(its.controller->authorizeWithCmd("dd"));
    ASSERT_EQ(its.authorization.asked.size(), 1U);
    EXPECT_THAT(its.authorization.asked[0].rights, IsEmpty());
    EXPECT_EQ(its.authorization.asked[0].flags, 3U);
    EXPECT_EQ(its.controller->authRef(), AuthorizationRef{1});
    ASSERT_TRUE(its.authorization.rights.contains("com.corvitel.KestravHelper"));
    EXPECT_EQ(its.authorization.rights.at("com.corvitel.KestravHelper").rule, "authenticate-admin");
    EXPECT_EQ(its.authorization.rights.at("com.corvitel.KestravHelper").descriptionKey, "Authorize disk access");
    EXPECT_THAT(its.systemLog.entries(), ElementsAre("Authorization result: 0"));
}

TEST(AuthorizeWithCmd, DoesNotMindARightThatCannotBeRegistered) {
    ControllerOnFakes its;
    its.authorization.setRightStatus = -60005;
    EXPECT_TRUE(its.controller->authorizeWithCmd("dd"));
}

TEST(AuthorizeWithCmd, ReportsARefusalAndRegistersNothing) {
    ControllerOnFakes its;
    its.authorization.createStatus = -60006;
    EXPECT_FALSE(its.controller->authorizeWithCmd("dd"));
    EXPECT_THAT(its.systemLog.entries(), ElementsAre("Authorization result: -60006"));
    EXPECT_THAT(its.authorization.rights, IsEmpty());
    EXPECT_EQ(its.controller->authRef(), std::nullopt);
}

TEST(AuthorizeWithCmdDeathTest, StopsTheProcessOnASuccessWithoutAHandle) {
    ControllerOnFakes its;
    its.authorization.givesHandle = false;
    EXPECT_EXIT(its.controller->authorizeWithCmd("dd"), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrav
