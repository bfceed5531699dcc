#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "app/ApplicationError.h"

namespace kestrav {

class Alerts;
class ManagedObjectContext;
class ManagedObjectModel;
class PersistentStoreCoordinator;
class Resources;

/// What the application's data stands on, from the folder up to the context in which records are changed. Each part is
/// made when it is first asked for, unless another one was set before. Used on the main thread.
class PersistentStoreStack {
  public:
    /// `alerts` and `resources` are not owned and outlive this object. `applicationSupport` is the folder for the data
    /// of the user's applications.
    PersistentStoreStack(Alerts& alerts, const Resources& resources, std::filesystem::path applicationSupport);

    /// The folder for this application's data.
    const std::filesystem::path& applicationDocumentsDirectory();
    void setApplicationDocumentsDirectory(std::filesystem::path value);

    /// The model "Kestrav" of the program's resources. Stops the process when it is missing.
    const std::shared_ptr<const ManagedObjectModel>& managedObjectModel();
    void setManagedObjectModel(std::shared_ptr<const ManagedObjectModel> value);

    /// Makes the folder and the file if they are missing. What can't be put right is shown, then stops the process.
    const std::shared_ptr<PersistentStoreCoordinator>& persistentStoreCoordinator();
    void setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> value);

    const std::shared_ptr<ManagedObjectContext>& managedObjectContext();
    void setManagedObjectContext(std::shared_ptr<ManagedObjectContext> value);

  private:
    struct StoreFailure;
    std::optional<StoreFailure> prepareDataFolder();
    std::optional<StoreFailure> openStore();
    [[noreturn]] void presentAndAbort(const StoreFailure& failure);

    Alerts& alerts_;
    const Resources& resources_;
    std::filesystem::path applicationSupport_;
    std::optional<std::filesystem::path> applicationDocumentsDirectory_;
    std::shared_ptr<const ManagedObjectModel> managedObjectModel_;
    std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator_;
    std::shared_ptr<ManagedObjectContext> managedObjectContext_;
};

}  // namespace kestrav
