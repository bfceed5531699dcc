#include <gtest/gtest.h>

#include "app/ManagedObjectContext.h"
#include "app/ManagedObjectModel.h"
#include "app/PersistentStoreCoordinator.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

class Context : public ::testing::Test {
  protected:
    Context() { EXPECT_TRUE(coordinator_->addPersistentStore(folder_.path() / "store")); }

    TemporaryFolder folder_;
    std::shared_ptr<PersistentStoreCoordinator> coordinator_ = std::make_shared<PersistentStoreCoordinator>(
        std::make_shared<const ManagedObjectModel>(ManagedObjectModel::parse("<model name='Kestrav'/>").value()));
};

class CountingEditor final : public Editor {
  public:
    explicit CountingEditor(bool ready) : ready_(ready) {}
    int asked = 0;
    bool commitEditing() override {
        ++asked;
        return ready_;
    }

  private:
    bool ready_;
};

TEST_F(Context, HasNoChangesAtFirst) {
    const ManagedObjectContext context(coordinator_);
    EXPECT_FALSE(context.hasChanges());
    EXPECT_EQ(context.value("a"), std::nullopt);
}

TEST_F(Context, HasNoneAfterAChangeThatWasTakenBack) {
    ManagedObjectContext context(coordinator_);
    context.setValue("a", "1");
    context.setValue("a", "2");
    EXPECT_TRUE(context.hasChanges());
    context.undoManager().undo();
    EXPECT_EQ(context.value("a"), "1");
    context.undoManager().undo();
    EXPECT_EQ(context.value("a"), std::nullopt);
    EXPECT_FALSE(context.hasChanges());
    EXPECT_FALSE(context.undoManager().canUndo());
    context.undoManager().undo();
}

TEST_F(Context, RemovesARecord) {
    ManagedObjectContext context(coordinator_);
    context.setValue("a", "1");
    ASSERT_TRUE(context.save());
    context.setValue("a", std::nullopt);
    EXPECT_TRUE(context.hasChanges());
    ASSERT_TRUE(context.save());
    EXPECT_TRUE(coordinator_->store()->records().empty());
}

TEST_F(Context, SeesWhatAnEarlierOneSaved) {
    ManagedObjectContext earlier(coordinator_);
    earlier.setValue("a", "1");
    ASSERT_TRUE(earlier.save());
    EXPECT_EQ(ManagedObjectContext(coordinator_).value("a"), "1");
}

TEST_F(Context, AsksItsEditorsUntilOneIsNotReady) {
    ManagedObjectContext context(coordinator_);
    EXPECT_TRUE(context.commitEditing());
    CountingEditor ready(true);
    CountingEditor notReady(false);
    CountingEditor last(true);
    context.registerEditor(ready);
    EXPECT_TRUE(context.commitEditing());
    context.registerEditor(notReady);
    context.registerEditor(last);
    EXPECT_FALSE(context.commitEditing());
    EXPECT_EQ(ready.asked, 2);
    EXPECT_EQ(last.asked, 0);
}

}  // namespace
}  // namespace kestrav
