#pragma once

#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <utility>

#include "app/ApplicationError.h"
#include "app/PersistentStoreStack.h"
#include "command/Authorization.h"

namespace kestrav {

class Alerts;
class HelperInstallation;
class MainView;
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
    std::ostream& console;                     ///< standard output
};

/// The application's life: what happens at its launch, when it is to quit, and to the little data it keeps,
/// whose objects `PersistentStoreStack` makes when they are first asked for. Used on the main thread.
class AppDelegate {
  public:
    explicit AppDelegate(ApplicationServices services);
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    const std::optional<AuthorizationRef>& authRef() const { return authRef_; }
    void setAuthRef(std::optional<AuthorizationRef> value) { authRef_ = value; }

    /// See `PersistentStoreStack`, whose operations these are.
    const std::filesystem::path& applicationDocumentsDirectory() { return stack_.applicationDocumentsDirectory(); }
    void setApplicationDocumentsDirectory(std::filesystem::path value) {
        stack_.setApplicationDocumentsDirectory(std::move(value));
    }
    const std::shared_ptr<const ManagedObjectModel>& managedObjectModel() { return stack_.managedObjectModel(); }
    void setManagedObjectModel(std::shared_ptr<const ManagedObjectModel> value) {
        stack_.setManagedObjectModel(std::move(value));
    }
    const std::shared_ptr<PersistentStoreCoordinator>& persistentStoreCoordinator() {
        return stack_.persistentStoreCoordinator();
    }
    void setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> value) {
        stack_.setPersistentStoreCoordinator(std::move(value));
    }
    const std::shared_ptr<ManagedObjectContext>& managedObjectContext() { return stack_.managedObjectContext(); }
    void setManagedObjectContext(std::shared_ptr<ManagedObjectContext> value) {
        stack_.setManagedObjectContext(std::move(value));
    }

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
    TerminateReply quitWithoutSaving(const ApplicationError& error);

    ApplicationServices services_;
    std::optional<AuthorizationRef> authRef_;
    PersistentStoreStack stack_;
};

}  // namespace kestrav
