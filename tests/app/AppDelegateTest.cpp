#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/AppDelegate.h"
#include "app/ManagedObjectContext.h"
#include "app/ManagedObjectModel.h"
#include "app/PersistentStoreCoordinator.h"
#include "tests/app/fakes/DelegateOnFakes.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;
using ::testing::KilledBySignal;
using ::testing::Pair;

class HesitatingEditor final : public Editor {
  public:
    bool commitEditing() override { return false; }
};

TEST(AppDelegate, StartsWithoutAConsent) {
    DelegateOnFakes its;
    EXPECT_EQ(its.delegate.authRef(), std::nullopt);
    its.delegate.setAuthRef(AuthorizationRef{3});
    EXPECT_EQ(its.delegate.authRef(), AuthorizationRef{3});
}

TEST(AppDelegate, KeepsItsDataInAFolderOfItsOwn) {
    DelegateOnFakes its;
    EXPECT_EQ(its.delegate.applicationDocumentsDirectory(), its.folder.path() / "com.corvatel.Kestrav");
    its.delegate.setApplicationDocumentsDirectory("/elsewhere");
    EXPECT_EQ(its.delegate.applicationDocumentsDirectory(), "/elsewhere");
}

TEST(AppDelegate, MakesTheStoresObjectsOnceAndJoinsThem) {
    DelegateOnFakes its;
    const auto context = its.delegate.managedObjectContext();
    EXPECT_EQ(its.delegate.managedObjectContext(), context);
    EXPECT_EQ(context->coordinator(), its.delegate.persistentStoreCoordinator());
    EXPECT_EQ(context->coordinator()->model(), its.delegate.managedObjectModel());
    EXPECT_EQ(its.delegate.managedObjectModel()->name(), "Kestrav");
    EXPECT_EQ(context->coordinator()->store()->file(), its.storeFile());
    EXPECT_EQ(&its.delegate.windowWillReturnUndoManager(), &context->undoManager());
}

TEST(AppDelegate, TakesOtherObjectsForTheStores) {
    DelegateOnFakes its;
    DelegateOnFakes others;
    its.delegate.setManagedObjectModel(others.delegate.managedObjectModel());
    its.delegate.setPersistentStoreCoordinator(others.delegate.persistentStoreCoordinator());
    its.delegate.setManagedObjectContext(others.delegate.managedObjectContext());
    EXPECT_EQ(its.delegate.managedObjectModel(), others.delegate.managedObjectModel());
    EXPECT_EQ(its.delegate.persistentStoreCoordinator(), others.delegate.persistentStoreCoordinator());
    EXPECT_EQ(its.delegate.managedObjectContext(), others.delegate.managedObjectContext());
    EXPECT_FALSE(std::filesystem::exists(its.storeFile()));
}

TEST(AppDelegate, QuitsWhenItsLastWindowIsClosed) {
    const DelegateOnFakes its;
    EXPECT_TRUE(its.delegate.applicationShouldTerminateAfterLastWindowClosed());
}

TEST(AppDelegate, TouchesNothingWhenItEnds) {
    DelegateOnFakes its;
    its.delegate.applicationWillTerminate();
    EXPECT_TRUE(std::filesystem::is_empty(its.folder.path()));
    EXPECT_THAT(its.log.entries(), IsEmpty());
}

TEST(Launch, InstallsTheHelperWithOneConsentWhileTheWindowLivesOn) {
    DelegateOnFakes its;
    its.delegate.applicationDidFinishLaunching();
    ASSERT_EQ(its.authorization.asked.size(), 1U);
    EXPECT_THAT(its.authorization.asked[0].rights,
                ElementsAre(AuthorizationItem{"com.apple.ServiceManagement.blesshelper", "", 0}));
    EXPECT_EQ(its.authorization.asked[0].flags, 19U);
    EXPECT_TRUE(its.authorization.helpers.contains("com.corvatel.KestravHelper"));
    EXPECT_EQ(its.delegate.authRef(), AuthorizationRef{1});
    EXPECT_THAT(its.log.entries(), ElementsAre("Installed successfully!"));
    EXPECT_THAT(its.view.journal, ElementsAre("busy", "idle"));
    EXPECT_THAT(its.alerts.alerts, IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(its.folder.path()));
}

TEST(LaunchDeathTest, EndsWithOneAlertWhenThereIsNoConsent) {
    DelegateOnFakes its;
    its.authorization.createStatus = -60006;
    EXPECT_EXIT(its.delegate.applicationDidFinishLaunching(), ExitedWithCode(1),
                "^alert: Authorization failure: [^\n]+\n$");
}

TEST(LaunchDeathTest, EndsWithTheSameAlertWhenTheInstallerRefuses) {
    DelegateOnFakes its;
    its.authorization.blesses = false;
    its.authorization.blessError = BlessingError("The helper is missing.");
    EXPECT_EXIT(its.delegate.applicationDidFinishLaunching(), ExitedWithCode(1),
                "^alert: Authorization failure: The helper is missing.\n$");
}

TEST(LaunchDeathTest, StopsWhenTheInstallerRefusesWithoutAReason) {
    DelegateOnFakes its;
    its.authorization.blesses = false;
    EXPECT_EXIT(its.delegate.applicationDidFinishLaunching(), KilledBySignal(SIGABRT), "^$");
}

TEST(Launch, KeepsNoConsentThatWasRefused) {
    DelegateOnFakes its;
    its.delegate.setAuthRef(AuthorizationRef{9});
    its.authorization.createStatus = -60005;
    EXPECT_ANY_THROW(its.delegate.blessHelper());
    EXPECT_EQ(its.delegate.authRef(), std::nullopt);
}

TEST(SignalHandlerDeathTest, ShowsTheStreamAndTheTextThenEndsWell) {
    DelegateOnFakes its(std::cerr);
    for (const int signal : {SIGINT, 0, -5}) {
        EXPECT_EXIT(its.delegate.SignalHandler(signal), ExitedWithCode(0), "^0x[0-9a-f]+ \nInterrupted.\n\n$");
    }
}

TEST(SaveAction, SavesWhatHasChanged) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.delegate.saveAction();
    EXPECT_FALSE(its.delegate.managedObjectContext()->hasChanges());
    EXPECT_EQ(its.savedRecords(), (PersistentStore::Records{{"colour", "red"}}));
    EXPECT_THAT(its.log.entries(), IsEmpty());
}

TEST(SaveAction, WritesNothingWithoutAChange) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext();
    std::filesystem::remove(its.storeFile());
    its.delegate.saveAction();
    EXPECT_FALSE(std::filesystem::exists(its.storeFile()));
}

TEST(SaveAction, SavesInSpiteOfAnEditThatIsNotDone) {
    DelegateOnFakes its;
    HesitatingEditor editor;
    its.delegate.managedObjectContext()->registerEditor(editor);
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.delegate.saveAction();
    EXPECT_THAT(its.log.entries(), ElementsAre("AppDelegate unable to commit editing before saving"));
    EXPECT_EQ(its.savedRecords(), (PersistentStore::Records{{"colour", "red"}}));
}

TEST(SaveAction, PresentsAnErrorAndKeepsTheChange) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.blockTheStore();
    its.delegate.saveAction();
    ASSERT_EQ(its.alerts.errors.size(), 1U);
    EXPECT_EQ(its.alerts.errors[0].domain, "errno");
    EXPECT_TRUE(its.delegate.managedObjectContext()->hasChanges());
}

TEST(Quit, HappensAtOnceAndLeavesAStoreBehind) {
    DelegateOnFakes its;
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::now);
    EXPECT_TRUE(std::filesystem::is_regular_file(its.storeFile()));
    EXPECT_THAT(its.savedRecords(), IsEmpty());
    EXPECT_THAT(its.alerts.alerts, IsEmpty());
}

TEST(Quit, LeavesAStoreThatIsThereAlone) {
    DelegateOnFakes earlier;
    earlier.delegate.managedObjectContext()->setValue("colour", "red");
    earlier.delegate.saveAction();
    DelegateOnFakes its;
    std::filesystem::create_directory(its.folder.path() / "com.corvatel.Kestrav");
    std::filesystem::copy(earlier.storeFile(), its.storeFile());
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::now);
    EXPECT_EQ(its.savedRecords(), (PersistentStore::Records{{"colour", "red"}}));
}

TEST(Quit, DoesNotSaveWhatHasNotChanged) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext();
    its.blockTheStore();
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::now);
    EXPECT_THAT(its.alerts.errors, IsEmpty());
}

TEST(Quit, SavesFirst) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::now);
    EXPECT_EQ(its.savedRecords(), (PersistentStore::Records{{"colour", "red"}}));
}

TEST(Quit, IsCancelledByAnEditThatIsNotDone) {
    DelegateOnFakes its;
    HesitatingEditor editor;
    its.delegate.managedObjectContext()->registerEditor(editor);
    its.delegate.managedObjectContext()->setValue("colour", "red");
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::cancel);
    EXPECT_THAT(its.log.entries(), ElementsAre("AppDelegate unable to commit editing to terminate"));
    EXPECT_THAT(its.savedRecords(), IsEmpty());
}

TEST(Quit, IsCancelledWhenPresentingTheErrorPutItRight) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.blockTheStore();
    its.alerts.putsErrorsRight = true;
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), TerminateReply::cancel);
    EXPECT_EQ(its.alerts.errors.size(), 1U);
    EXPECT_THAT(its.alerts.alerts, IsEmpty());
}

struct Answer {
    const char* description;
    std::int32_t response;
    TerminateReply reply;
};
class QuitWithoutSaving : public ::testing::TestWithParam<Answer> {};
INSTANTIATE_TEST_SUITE_P(, QuitWithoutSaving,
                         ::testing::Values(Answer{"QuitAnywayStays", 1000, TerminateReply::cancel},
                                           Answer{"CancelQuits", 1001, TerminateReply::now},
                                           Answer{"AnythingElseQuits", -1, TerminateReply::now}),
                         [](const auto& answer) { return answer.param.description; });

TEST_P(QuitWithoutSaving, AsksAndTurnsTheAnswerRound) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.blockTheStore();
    its.alerts.response = GetParam().response;
    EXPECT_EQ(its.delegate.applicationShouldTerminate(), GetParam().reply);
    EXPECT_EQ(its.alerts.errors.size(), 1U);
    ASSERT_EQ(its.alerts.alerts.size(), 1U);
    EXPECT_EQ(its.alerts.alerts[0].messageText, "Could not save changes while quitting. Quit anyway?");
    EXPECT_EQ(its.alerts.alerts[0].informativeText,
              "Quitting now will lose any changes you have made since the last successful save");
    EXPECT_THAT(its.alerts.alerts[0].buttons, ElementsAre("Quit anyway", "Cancel"));
}

TEST(QuestionAtTheEnd, TellsTranslatorsWhatEachTextIs) {
    DelegateOnFakes its;
    its.delegate.managedObjectContext()->setValue("colour", "red");
    its.blockTheStore();
    its.delegate.applicationShouldTerminate();
    EXPECT_THAT(its.alerts.comments,
                ElementsAre(Pair("Cancel", "Cancel button title"),
                            Pair("Could not save changes while quitting. Quit anyway?",
                                 "Quit without saves error question message"),
                            Pair("Quit anyway", "Quit anyway button title"),
                            Pair("Quitting now will lose any changes you have made since the last successful save",
                                 "Quit without saves error question info")));
}

/// What a failing store says before it stops the process: the error, the reason, the cause.
std::string report(const std::string& reason, const std::string& cause) {
    return "^error: YOUR_ERROR_DOMAIN 9999: Failed to initialize the application's saved data\\|" + reason + "\\|" +
           cause + "\n$";
}
const char* const kNoReason = "There was an error creating or loading the application's saved data.";

TEST(StoreDeathTest, NamesThePlainFileThatStandsInPlaceOfTheFolder) {
    DelegateOnFakes its;
    const std::filesystem::path folder = its.folder.path() / "com.corvatel.Kestrav";
    std::ofstream(folder) << "not a folder";
    EXPECT_EXIT(
        its.delegate.applicationShouldTerminate(), KilledBySignal(SIGABRT),
        report("Expected a folder to store application data, found a file " + folder.string() + ".", "no cause"));
}

TEST(StoreDeathTest, TellsWhyTheFolderCannotBeMade) {
    DelegateOnFakes its;
    its.delegate.setApplicationDocumentsDirectory("/proc/self/nowhere/com.corvatel.Kestrav");
    EXPECT_EXIT(its.delegate.managedObjectContext(), KilledBySignal(SIGABRT),
                report(kNoReason, "Could not create the folder [^|]*: No such file or directory."));
}

TEST(StoreDeathTest, TellsWhyTheFolderCannotBeLookedAt) {
    DelegateOnFakes its;
    std::ofstream(its.folder.path() / "file") << "x";
    its.delegate.setApplicationDocumentsDirectory(its.folder.path() / "file" / "com.corvatel.Kestrav");
    EXPECT_EXIT(its.delegate.managedObjectContext(), KilledBySignal(SIGABRT),
                report(kNoReason, "Could not look at [^|]*: Not a directory."));
}

TEST(StoreDeathTest, TellsWhyTheStoreCannotBeAdded) {
    DelegateOnFakes its;
    std::filesystem::create_directories(its.storeFile());
    EXPECT_EXIT(its.delegate.managedObjectContext(), KilledBySignal(SIGABRT),
                report(kNoReason, "Could not read [^|]*: Is a directory."));
}

TEST(DataFolder, MakesItsFolderWithAllThatIsAboveIt) {
    DelegateOnFakes its;
    its.delegate.setApplicationDocumentsDirectory(its.folder.path() / "a" / "b" / "c");
    its.delegate.managedObjectContext();
    EXPECT_TRUE(std::filesystem::is_regular_file(its.folder.path() / "a" / "b" / "c" / "CocoaAppCD.storedata"));
}

TEST(ModelDeathTest, StopsTheProcessWhenItIsMissingOrNoModel) {
    DelegateOnFakes its;
    its.resources.files["Kestrav.momd"] = "<model/>";
    EXPECT_EXIT(its.delegate.managedObjectModel(), KilledBySignal(SIGABRT), "^$");
    its.resources.files["Kestrav.momd"] = "not XML";
    EXPECT_EXIT(its.delegate.managedObjectModel(), KilledBySignal(SIGABRT), "^$");
    its.resources.files.clear();
    EXPECT_EXIT(its.delegate.managedObjectModel(), KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace kestrav
