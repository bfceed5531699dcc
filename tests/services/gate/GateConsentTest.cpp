#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/gate/GateWithoutDisks.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using Kind = GateAnswer::Kind;

class GateAsksForConsent : public GateWithoutDisks {
  protected:
    FakeAsker other_{kOtherUser};
};

TEST_F(GateAsksForConsent, AndGoesOnWithIt) {
    const GateAnswer answer = unmount(other_);
    EXPECT_EQ(answer.kind, Kind::answered);
    EXPECT_THAT(consent_.askedAbout, SizeIs(1));
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith("user 1: umount /dev/sdzzs1: Refused: ")));
}

TEST_F(GateAsksForConsent, AndSaysToWhat) {
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const std::string image = folder.file("new.fds", "firmware");
    gate_.perform(other_, "dd", std::vector<std::string>{"if=" + image, "of=/dev/rsdzz", "seek=1536", "bs=512"});
    unmount(other_);
    ASSERT_THAT(consent_.intents, SizeIs(2));
    EXPECT_EQ(consent_.intents[0].file, image);
    EXPECT_EQ(consent_.intents[0].bytes, "8");
    EXPECT_EQ(consent_.intents[0].disk, "sdzz");
    EXPECT_EQ(consent_.intents[0].firstBlock, "1536");
    EXPECT_EQ(consent_.intents[1].file, "");
    EXPECT_EQ(consent_.intents[1].disk, "sdzz");
}

TEST_F(GateAsksForConsent, ButNotForAnImageThatCannotBeOpened) {
    const GateAnswer answer = gate_.perform(
        other_, "dd", std::vector<std::string>{"if=/nonexistent", "of=/dev/rsdzz", "seek=1536", "bs=512"});
    EXPECT_EQ(answer.kind, Kind::answered);
    EXPECT_THAT(answer.text, StartsWith("Refused: "));
    EXPECT_THAT(consent_.askedAbout, IsEmpty());
}

TEST_F(GateAsksForConsent, AndDoesNothingWithoutIt) {
    consent_.problem = refused("no.");
    const GateAnswer answer = unmount(other_);
    EXPECT_EQ(answer.kind, Kind::denied);
    EXPECT_EQ(answer.text, "Refused: no.");
    EXPECT_THAT(log_.entries(), IsEmpty()) << "the service logs it";
}

TEST_F(GateAsksForConsent, ButNotForWhatItRefusesAnyway) {
    consent_.problem = refused("no.");
    const GateAnswer answer = remove(other_);
    EXPECT_EQ(answer.kind, Kind::answered);
    EXPECT_EQ(answer.text, "Refused: \"rm\" is not a command of this service.");
    EXPECT_THAT(consent_.askedAbout, IsEmpty());
}

TEST_F(GateAsksForConsent, ButNotForRootAndTheServicesOwnUser) {
    consent_.problem = refused("no.");
    FakeAsker self;
    EXPECT_EQ(unmount(self).kind, Kind::answered);
    EXPECT_THAT(consent_.askedAbout, IsEmpty());
}

TEST_F(GateAsksForConsent, AndNeedNotBeginOnceTheAskerHasGone) {
    other_.begins = false;
    EXPECT_EQ(unmount(other_).kind, Kind::notBegun);
    EXPECT_EQ(remove(other_).kind, Kind::notBegun);
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(GateAsksForConsent, ButNotOfAUserWhomTheSystemDoesNotKnow) {
    FakeAsker unknown(4'000'000'123U);
    const GateAnswer answer = unmount(unknown);
    EXPECT_EQ(answer.kind, Kind::denied);
    EXPECT_EQ(answer.text, "Refused: the system does not know a user with the number 4000000123.");
    EXPECT_THAT(consent_.askedAbout, IsEmpty());
}

TEST_F(GateAsksForConsent, AndAdmitsNobodyWhomItCanNotBeGivenTo) {
    consent_.turnsEverybody = refused("not here.");
    ASSERT_FALSE(gate_.admit(kOtherUser));
    EXPECT_EQ(gate_.admit(kOtherUser).problem().sentence, "not here.");
    EXPECT_TRUE(gate_.admit(0));
}

}  // namespace
}  // namespace kestrav
