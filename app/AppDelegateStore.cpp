// The delegate's part that keeps the application's data.

#include <cerrno>
#include <sys/stat.h>

#include "app/Alerts.h"
#include "app/AppDelegate.h"
#include "app/ManagedObjectContext.h"
#include "app/ManagedObjectModel.h"
#include "app/PersistentStoreCoordinator.h"
#include "app/Resources.h"
#include "base/stopProcess.h"

namespace kestrav {

/// Why there is no store; the reason is for the person, what lies below it for whoever is asked for help.
struct AppDelegate::StoreFailure {
    std::string reason = "There was an error creating or loading the application's saved data.";
    std::optional<ApplicationError> underlying;
};

const std::filesystem::path& AppDelegate::applicationDocumentsDirectory() {
    if (!applicationDocumentsDirectory_) {
        applicationDocumentsDirectory_ = services_.applicationSupport / "com.corvatel.Kestrav";
    }
    return *applicationDocumentsDirectory_;
}

void AppDelegate::setApplicationDocumentsDirectory(std::filesystem::path value) {
    applicationDocumentsDirectory_ = std::move(value);
}

const std::shared_ptr<const ManagedObjectModel>& AppDelegate::managedObjectModel() {
    if (!managedObjectModel_) {
        const std::optional<std::string> content = services_.resources.resource("Kestrav", "momd");
        require(content.has_value());
        const std::optional<ManagedObjectModel> model = ManagedObjectModel::parse(*content);
        require(model.has_value());
        managedObjectModel_ = std::make_shared<const ManagedObjectModel>(*model);
    }
    return managedObjectModel_;
}

void AppDelegate::setManagedObjectModel(std::shared_ptr<const ManagedObjectModel> value) {
    managedObjectModel_ = std::move(value);
}

const std::shared_ptr<PersistentStoreCoordinator>& AppDelegate::persistentStoreCoordinator() {
    if (!persistentStoreCoordinator_) {
        if (const auto failure = prepareDataFolder()) presentAndAbort(*failure);
        if (const auto failure = openStore()) presentAndAbort(*failure);
    }
    return persistentStoreCoordinator_;
}

void AppDelegate::setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> value) {
    persistentStoreCoordinator_ = std::move(value);
}

const std::shared_ptr<ManagedObjectContext>& AppDelegate::managedObjectContext() {
    if (!managedObjectContext_) {
        managedObjectContext_ = std::make_shared<ManagedObjectContext>(persistentStoreCoordinator());
    }
    return managedObjectContext_;
}

void AppDelegate::setManagedObjectContext(std::shared_ptr<ManagedObjectContext> value) {
    managedObjectContext_ = std::move(value);
}

std::optional<AppDelegate::StoreFailure> AppDelegate::prepareDataFolder() {
    const std::filesystem::path& folder = applicationDocumentsDirectory();
    struct stat status {};
    if (::stat(folder.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return std::nullopt;
        return StoreFailure{"Expected a folder to store application data, found a file " + folder.string() + ".", {}};
    }
    StoreFailure failure;
    failure.underlying = systemError(errno, "look at " + folder.string());
    if (errno != ENOENT) return failure;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error) return std::nullopt;
    failure.underlying = systemError(error.value(), "create the folder " + folder.string());
    return failure;
}

std::optional<AppDelegate::StoreFailure> AppDelegate::openStore() {
    auto coordinator = std::make_shared<PersistentStoreCoordinator>(managedObjectModel());
    StoreFailure failure;
    failure.underlying = coordinator->addPersistentStore(applicationDocumentsDirectory() / "CocoaAppCD.storedata");
    if (failure.underlying) return failure;
    persistentStoreCoordinator_ = std::move(coordinator);
    return std::nullopt;
}

void AppDelegate::presentAndAbort(const StoreFailure& failure) {
    ApplicationError error{"YOUR_ERROR_DOMAIN", 9999, "Failed to initialize the application's saved data",
                           failure.reason, nullptr};
    if (failure.underlying) error.underlying = std::make_shared<const ApplicationError>(*failure.underlying);
    services_.alerts.presentError(error);
    stopProcess();
}

}  // namespace kestrav
