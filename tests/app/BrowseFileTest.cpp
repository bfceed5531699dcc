#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>

#include "tests/TemporaryFolder.h"
#include "tests/app/fakes/ControllerOnFakes.h"
#include "tests/command/LoopbackService.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// One button's way through the action.
struct Way {
    const char* description;
    std::optional<std::string> identifier;
    const char* type;
    const char* title;
    const char* beginning;
    const char* end;
    const char* seek;
};

std::ostream& operator<<(std::ostream& stream, const Way& way) {
    return stream << way.description;
}

const Way kFirmware{"Firmware",
                    "firmwareBtn",
                    "fds",
                    "Choose a firmware image",
                    "Preparing to process firmware.",
                    "End firmware processing.",
                    "seek=1536"};

Way iconWay(const char* description, std::optional<std::string> identifier) {
    return {description,
            std::move(identifier),
            "fif",
            "Choose a icon image",
            "Preparing to process icon.",
            "End icon processing.",
            "seek=2048"};
}

class BrowseFile : public ::testing::TestWithParam<Way> {
  protected:
    BrowseFile() { its_.load(); }

    std::string image(std::size_t size) {
        std::string path = folder_.path() / "an image=1.fds";
        std::ofstream(path) << std::string(size, 'x');
        return path;
    }
    void press() {
        const FakeButton sender(its_.view.journal, "sender", GetParam().identifier);
        its_.controller->browseFile(sender);
    }

    TemporaryFolder folder_;
    LoopbackService service_;
    ControllerOnFakes its_{service_.port()};
};

INSTANTIATE_TEST_SUITE_P(, BrowseFile,
                         ::testing::Values(kFirmware, iconWay("Icon", "iconBtn"), iconWay("NoIdentifier", std::nullopt),
                                           iconWay("EmptyIdentifier", ""), iconWay("OtherCase", "firmwarebtn"),
                                           iconWay("Longer", "firmwareBtn ")),
                         [](const auto& way) { return way.param.description; });

TEST_P(BrowseFile, AsksForOneTypeUnderTheButtonsTitle) {
    press();
    EXPECT_THAT(its_.view.choice.types, ElementsAre(GetParam().type));
    EXPECT_EQ(its_.view.choice.title, GetParam().title);
}

TEST_P(BrowseFile, SetsTheFiveFlagsInTheirOrder) {
    press();
    EXPECT_THAT(its_.view.choice.setUp,
                ElementsAre("shows resize indicator yes", "shows hidden files no", "can choose directories yes",
                            "can create directories yes", "allows multiple selection no"));
}

TEST_P(BrowseFile, DoesNothingWhenTheChoiceIsCancelled) {
    its_.controller->setTargetFilename("/earlier.fds");
    its_.view.choice.path = "/not/confirmed.fds";
    press();
    EXPECT_EQ(its_.controller->targetFilename(), "");
    EXPECT_THAT(its_.view.journal, IsEmpty());
    EXPECT_TRUE(its_.view.firmwareButton->enabled);
    EXPECT_TRUE(its_.view.iconButton->enabled);
}

TEST_P(BrowseFile, TakesNoResponseButOneForAConfirmation) {
    for (const std::int32_t response : {-1, 2, 1000}) {
        its_.view.choice.response = response;
        its_.view.choice.path = "/x.fds";
        press();
        EXPECT_EQ(its_.controller->targetFilename(), "") << response;
        EXPECT_THAT(its_.view.journal, IsEmpty()) << response;
    }
}

TEST_P(BrowseFile, ForgetsTheEarlierChoiceBeforeTheChooserOpens) {
    its_.controller->setTargetFilename("/earlier.fds");
    std::optional<std::string> meanwhile;
    its_.view.choice.whileOpen = [&] { meanwhile = its_.controller->targetFilename(); };
    press();
    EXPECT_EQ(meanwhile, "");
}

TEST_P(BrowseFile, ForgetsAfterACancelledChoiceWhatWasSetWhileItWasOpen) {
    its_.view.choice.whileOpen = [&] { its_.controller->setTargetFilename("/meanwhile.fds"); };
    press();
    EXPECT_EQ(its_.controller->targetFilename(), "");
}

TEST_P(BrowseFile, LocksTheWindowForTheLengthOfTheUpdate) {
    its_.plugIn("disk2");
    const std::string path = image(40000);
    its_.view.choose(path);
    press();
    EXPECT_THAT(
        its_.view.journal,
        ElementsAre("firmware enabled no", "icon enabled no", "indicator turns yes",
                    std::string("log ") + GetParam().beginning, "busy",
                    "log Loaded icon file: " + path + " with 40000 bytes.", "log Writing to device memory space.",
                    "log ", "log Finished writing to device.", "idle", std::string("log ") + GetParam().end,
                    "firmware enabled yes", "icon enabled yes", "indicator turns no"));
    EXPECT_EQ(its_.controller->targetFilename(), path);
}

TEST_P(BrowseFile, HandsTheImageToTheButtonsUpdate) {
    its_.plugIn("disk2");
    const std::string path = image(1);
    its_.view.choose(path);
    press();
    const std::vector<std::string> requests = service_.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_THAT(requests[0], HasSubstr("umount"));
    EXPECT_THAT(requests[1], HasSubstr(GetParam().seek));
    EXPECT_THAT(requests[1], HasSubstr("an image=1.fds"));
}

TEST_P(BrowseFile, EndsInTheSameWayWhenTheUpdateFails) {
    its_.view.choose(image(3));
    press();
    const Journal& journal = its_.view.journal;
    ASSERT_GE(journal.size(), 6U);
    EXPECT_EQ(journal[journal.size() - 6], "log Failed writing to device.");
    EXPECT_THAT(Journal(journal.end() - 5, journal.end()),
                ElementsAre("idle", std::string("log ") + GetParam().end, "firmware enabled yes", "icon enabled yes",
                            "indicator turns no"));
}

TEST_P(BrowseFile, RunsTheUpdateAloneWhileBusy) {
    its_.view.choose(image(0));
    press();
    const auto busy = std::ranges::find(its_.view.journal, "busy");
    const auto idle = std::ranges::find(its_.view.journal, "idle");
    EXPECT_THAT(Journal(busy + 1, idle),
                ElementsAre("log Unabled to read file: " + its_.controller->targetFilename().value_or("")));
}

using BrowseFileDeathTest = BrowseFile;
INSTANTIATE_TEST_SUITE_P(, BrowseFileDeathTest, ::testing::Values(kFirmware, iconWay("Icon", "iconBtn")),
                         [](const auto& way) { return way.param.description; });

TEST_P(BrowseFileDeathTest, HandsADirectoryOnUnchangedAndTheEngineStops) {
    its_.view.choose(folder_.path());
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), "");
}

/// Says on standard error that it turns.
class TellingIndicator final : public ActivityIndicator {
  public:
    void startAnimation(const Button& /*sender*/) override { std::cerr << "it turns\n"; }
    void stopAnimation(const Button& /*sender*/) override {}
};

TEST_P(BrowseFileDeathTest, StopsTheProcessOnAConfirmedChoiceWithoutAPathBeforeAnythingBegins) {
    its_.view.choice.response = OpenPanel::kResponseOK;
    const auto telling = std::make_shared<TellingIndicator>();
    its_.controller->setLoaderBar(telling);
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), ::testing::Not(HasSubstr("it turns")));
}

TEST_P(BrowseFileDeathTest, StopsTheProcessWhenThePathIsGoneBeforeTheUpdate) {
    its_.view.choose(image(1));
    class Forgetful final : public ActivityIndicator {
      public:
        explicit Forgetful(ViewController& controller) : controller_(controller) {}
        void startAnimation(const Button& /*sender*/) override { controller_.setTargetFilename(std::nullopt); }
        void stopAnimation(const Button& /*sender*/) override {}

      private:
        ViewController& controller_;
    };
    const auto forgetful = std::make_shared<Forgetful>(*its_.controller);
    its_.controller->setLoaderBar(forgetful);
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), "");
}

TEST_P(BrowseFileDeathTest, StopsTheProcessWhenAPartOfTheWindowIsMissing) {
    its_.view.choose(image(1));
    its_.controller->setProcessFirmwareBtn(nullptr);
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), "");
    its_.load();
    its_.controller->setProcessIconBtn(nullptr);
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), "");
    its_.load();
    its_.controller->setLoaderBar(nullptr);
    EXPECT_EXIT(press(), ::testing::KilledBySignal(SIGABRT), "");
}

TEST(BrowseFileWithoutAConfirmation, NeedsNoPartOfTheWindow) {
    ControllerOnFakes its;
    its.controller->browseFile(*its.view.firmwareButton);
    EXPECT_EQ(its.controller->targetFilename(), "");
}

TEST(BrowseFileAgain, LooksAtTheButtonASecondTimeAfterTheChoice) {
    ControllerOnFakes its;
    its.load();
    const TemporaryFolder folder;
    const std::string path = folder.path() / "image";
    std::ofstream(path) << "x";
    its.view.choose(path);
    its.view.choice.whileOpen = [&] { its.view.firmwareButton->setIdentifier("else"); };
    its.controller->browseFile(*its.view.firmwareButton);
    EXPECT_THAT(its.view.choice.types, ElementsAre("fds"));
    EXPECT_THAT(its.view.journal, ::testing::Contains("log Preparing to process icon."));
}

TEST(BrowseFileAgain, TellsTheIndicatorWhichButtonItWas) {
    ControllerOnFakes its;
    its.load();
    const TemporaryFolder folder;
    const std::string path = folder.path() / "image";
    std::ofstream(path) << "x";
    its.view.choose(path);
    its.controller->browseFile(*its.view.iconButton);
    EXPECT_EQ(its.view.indicator->sender, its.view.iconButton.get());
    EXPECT_FALSE(its.view.indicator->turns);
}

}  // namespace
}  // namespace kestrav
