#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "app/PersistentStore.h"

namespace kestrav {

class ManagedObjectModel;

/// Joins a model with the file that its data is kept in.
class PersistentStoreCoordinator {
  public:
    explicit PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model);

    /// Adds an XML store, making the file when it is missing.
    Outcome<void> addPersistentStore(const std::filesystem::path& file);

    const std::shared_ptr<const ManagedObjectModel>& model() const { return model_; }
    /// The store that was added; null before.
    PersistentStore* store() { return store_ ? &*store_ : nullptr; }

  private:
    std::shared_ptr<const ManagedObjectModel> model_;
    std::optional<PersistentStore> store_;
};

}  // namespace kestrav
