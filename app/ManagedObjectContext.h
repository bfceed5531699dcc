#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/PersistentStore.h"
#include "app/UndoManager.h"

namespace kestrav {

class PersistentStoreCoordinator;

/// Something in which a person may be in the middle of an edit, such as a text field.
class Editor {
  public:
    virtual ~Editor() = default;
    /// Hands the edit over; false when that isn't possible yet.
    virtual bool commitEditing() = 0;
};

/// The application's data as it is being worked with: a copy of the store's records that is changed freely and then
/// saved as a whole. Used on the main thread.
class ManagedObjectContext {
  public:
    /// `coordinator` has a store.
    explicit ManagedObjectContext(std::shared_ptr<PersistentStoreCoordinator> coordinator);
    ManagedObjectContext(const ManagedObjectContext&) = delete;
    ManagedObjectContext& operator=(const ManagedObjectContext&) = delete;

    const std::shared_ptr<PersistentStoreCoordinator>& coordinator() const { return coordinator_; }

    std::optional<std::string> value(const std::string& name) const;
    /// Changes or, with an absent `value`, removes a record; can be undone.
    void setValue(const std::string& name, std::optional<std::string> value);

    /// `editor` is not owned and outlives this object.
    void registerEditor(Editor& editor) { editors_.push_back(&editor); }
    /// Has every editor hand its edit over; false as soon as one can't.
    bool commitEditing();

    bool hasChanges() const;
    /// Writes the changes to the store. After a problem they are still there.
    Outcome<void> save();

    UndoManager& undoManager() { return undoManager_; }

  private:
    void replace(const std::string& name, std::optional<std::string> value);

    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    PersistentStore::Records records_;
    std::vector<Editor*> editors_;
    UndoManager undoManager_;
};

}  // namespace kestrav
