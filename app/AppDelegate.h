#pragma once

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "app/ApplicationError.h"
#include "command/Authorization.h"

namespace kestrav {

class Alerts;
class HelperInstallation;
class MainView;
class ManagedObjectContext;
class ManagedObjectModel;
class PersistentStoreCoordinator;
class Resources;
class SystemLog;
class UndoManager;

/// Whether the application may end now.
enum class TerminateReply { cancel, now };

/// What an application delegate works with. Nothing is owned; all outlives the delegate.
struct ApplicationServices {
    HelperInstallation& installation;
    MainView& view;
    Alerts& alerts;
    const Resources& resources;
    SystemLog& log;
    std::filesystem::path applicationSupport;  ///< the folder for the data of the user's applications
    std::ostream& console = std::cout;
};

/// The application's life: what happens at its launch, when it is to quit, and to the little data it keeps.
/// Used on the main thread. The store's objects are made when they are first asked for.
class AppDelegate {
  public:
    explicit AppDelegate(ApplicationServices services);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    const std::optional<AuthorizationRef>& authRef() const { return authRef_; }
    void setAuthRef(std::optional<AuthorizationRef> value) { authRef_ = value; }

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

    /// Installs the helper. A failure is shown, then ends the process with status 1.
    void applicationDidFinishLaunching();
    /// See `HelperInstallation::blessHelper`; the consent goes into `authRef`.
    bool blessHelper();
    void applicationWillTerminate() {}
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }

    /// For whoever takes an interrupt: says so on the console and ends the process with status 0.
    [[noreturn]] void SignalHandler(int signal);

    void saveAction();
    UndoManager& windowWillReturnUndoManager();
    TerminateReply applicationShouldTerminate();

  private:
    struct StoreFailure;
    std::optional<StoreFailure> prepareDataFolder();
    std::optional<StoreFailure> openStore();
    [[noreturn]] void presentAndAbort(const StoreFailure& failure);
    TerminateReply quitWithoutSaving(const ApplicationError& error);

    ApplicationServices services_;
    std::optional<AuthorizationRef> authRef_;
    std::optional<std::filesystem::path> applicationDocumentsDirectory_;
    std::shared_ptr<const ManagedObjectModel> managedObjectModel_;
    std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator_;
    std::shared_ptr<ManagedObjectContext> managedObjectContext_;
};

}  // namespace kestrav
