#include <gtest/gtest.h>
#include <unistd.h>

#include "services/asker/NoConsent.h"
#include "services/asker/PolkitConsent.h"
#include "services/asker/obtainConsent.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/asker/FakeConsent.h"

namespace kestrav {
namespace {

class ObtainConsent : public testing::Test {
  protected:
    std::string refusal() {
        const auto outcome = obtainConsent(consent_, asker_, whoAsks(consent_, asker_), {});
        return outcome ? "" : outcome.problem().sentence;
    }

    FakeConsent consent_;
    FakeAsker asker_{kOtherUser};
};

TEST_F(ObtainConsent, IsNotNeededForRootAndTheServicesOwnUser) {
    consent_.problem = refused("no.");
    for (const uid_t uid : {uid_t{0}, ::geteuid()}) {
        FakeAsker asker(uid);
        EXPECT_FALSE(needsConsent(uid));
        EXPECT_TRUE(obtainConsent(consent_, asker, whoAsks(consent_, asker), {}));
        EXPECT_TRUE(mayAsk(NoConsent(), uid));
    }
    EXPECT_TRUE(consent_.askedAbout.empty());
}

TEST_F(ObtainConsent, IsRefusedToARootThatCouldNotDoItItself) {
    FakeAsker root(0);
    root.cannotItself = refused("confined.");
    const auto outcome = obtainConsent(consent_, root, whoAsks(consent_, root), {});
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.problem().sentence, "confined.");
    EXPECT_TRUE(consent_.askedAbout.empty());
}

TEST_F(ObtainConsent, AsksAboutEverybodyElse) {
    EXPECT_TRUE(needsConsent(kOtherUser));
    EXPECT_EQ(refusal(), "");
    ASSERT_EQ(consent_.askedAbout.size(), 1U);
    EXPECT_EQ(consent_.askedAbout.front(), ConsentSubject(AskingBusName{":1.1"}));
    EXPECT_TRUE(consent_.mayPrompt.front());
    asker_.prompts = false;
    consent_.needsAPerson = false;
    EXPECT_EQ(refusal(), "");
    EXPECT_FALSE(consent_.mayPrompt.back());
}

TEST_F(ObtainConsent, EndsWithARefusal) {
    consent_.problem = refused("no.");
    EXPECT_EQ(refusal(), "no.");
}

TEST_F(ObtainConsent, AsksNobodyWhereItIsKnownToBeRefused) {
    consent_.turnsEverybody = refused("not here.");
    EXPECT_EQ(refusal(), "not here.");
    EXPECT_EQ(asker_.lookedUp, 0);
    EXPECT_TRUE(consent_.askedAbout.empty());
}

TEST_F(ObtainConsent, AsksNobodyWhenItIsNotKnownWhoAsks) {
    asker_.name.clear();
    EXPECT_EQ(refusal(), "nobody knows who asks.");
    EXPECT_TRUE(consent_.askedAbout.empty());
}

TEST_F(ObtainConsent, IsGivenUpWhenTheAskerWantsNothingMore) {
    consent_.waits = true;
    asker_.wants = false;
    EXPECT_EQ(refusal(), "given up.");
}

TEST_F(ObtainConsent, AsksNobodyOutOfTurn) {
    asker_.notItsTurn = refused("somebody has just said no.");
    EXPECT_EQ(refusal(), "somebody has just said no.");
    EXPECT_TRUE(consent_.askedAbout.empty());
    EXPECT_FALSE(asker_.decision);
}

TEST_F(ObtainConsent, TellsWhatCameOfAsking) {
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(asker_.decision, true);
    consent_.problem = refused("no.");
    refusal();
    EXPECT_EQ(asker_.decision, false);
}

TEST_F(ObtainConsent, AwaitsNoTurnWhereItWasGivenBefore) {
    consent_.needsAPerson = false;
    asker_.notItsTurn = refused("somebody else's turn takes a minute.");
    EXPECT_EQ(refusal(), "");
    EXPECT_FALSE(asker_.decision) << "nobody was asked";
    EXPECT_EQ(consent_.mayPrompt, std::vector<bool>{false});
}

TEST_F(ObtainConsent, AwaitsNoTurnWhereNobodyIsPrompted) {
    consent_.needsAPerson = false;
    asker_.prompts = false;
    asker_.notItsTurn = refused("somebody has just said no.");
    EXPECT_EQ(refusal(), "");
    EXPECT_FALSE(asker_.decision);
}

TEST_F(ObtainConsent, IsOnlyForTheOneWhoWasAskedAbout) {
    consent_.meanwhile = [this] { asker_.name = ":1.2"; };
    EXPECT_EQ(refusal(), "the connection passed to another process.");
    consent_.meanwhile = [this] { asker_.name.clear(); };
    asker_.name = ":1.1";
    EXPECT_EQ(refusal(), "nobody knows who asks.");
}

TEST(NoConsent, TurnsEveryoneElseAway) {
    EXPECT_TRUE(mayAsk(NoConsent(), 0));
    EXPECT_TRUE(mayAsk(NoConsent(), ::geteuid()));
    const auto other = mayAsk(NoConsent(), ::geteuid() + 1001);
    ASSERT_FALSE(other);
    EXPECT_EQ(other.problem().sentence,
              "user " + std::to_string(::geteuid() + 1001) + " may not write the accessory; an administrator has to.");
    EXPECT_FALSE(mayAsk(NoConsent(), kOtherUser));
    EXPECT_FALSE(NoConsent().given(AskingBusName{":1.1"}, {}, true, [] { return true; }));
}

TEST(ConsentOfPolkit, IsRefusedToNobodyUnasked) {
    EXPECT_TRUE(PolkitConsent().canBeGivenTo(0));
    EXPECT_TRUE(PolkitConsent().canBeGivenTo(1001));
    EXPECT_EQ(PolkitConsent::kPatience, std::chrono::minutes(5));
}

}  // namespace
}  // namespace kestrav
