#include "app/PersistentStoreStack.h"

#include <cerrno>
#include <sys/stat.h>

#include "app/Alerts.h"
#include "app/ManagedObjectContext.h"
#include "app/ManagedObjectModel.h"
#include "app/PersistentStoreCoordinator.h"
#include "app/Resources.h"
#include "base/stopProcess.h"
#include "base/systemProblem.h"
#include "protocol/names.h"

namespace kestrav {

/// Why there is no store; the reason is for the person, what lies below it for whoever is asked for help.
struct PersistentStoreStack::StoreFailure {
    std::string reason = "There was an error creating or loading the application's saved data.";
    std::optional<ApplicationError> underlying;
};

PersistentStoreStack::PersistentStoreStack(Alerts& alerts, const Resources& resources,
                                           std::filesystem::path applicationSupport)
    : alerts_(alerts),
      resources_(resources),
      applicationSupport_(std::move(applicationSupport)) {}

const std::filesystem::path& PersistentStoreStack::applicationDocumentsDirectory() {
    if (!applicationDocumentsDirectory_) {
        applicationDocumentsDirectory_ = applicationSupport_ / kApplicationName;
    }
    return *applicationDocumentsDirectory_;
}

void PersistentStoreStack::setApplicationDocumentsDirectory(std::filesystem::path value) {
    applicationDocumentsDirectory_ = std::move(value);
}

const std::shared_ptr<const ManagedObjectModel>& PersistentStoreStack::managedObjectModel() {
    if (!managedObjectModel_) {
        const std::optional<std::string> content = resources_.resource("Kestrav", "momd");
        require(content.has_value());
        const std::optional<ManagedObjectModel> model = ManagedObjectModel::parse(*content);
        require(model.has_value());
        managedObjectModel_ = std::make_shared<const ManagedObjectModel>(*model);
    }
    return managedObjectModel_;
}

void PersistentStoreStack::setManagedObjectModel(std::shared_ptr<const ManagedObjectModel> value) {
    managedObjectModel_ = std::move(value);
}

const std::shared_ptr<PersistentStoreCoordinator>& PersistentStoreStack::persistentStoreCoordinator() {
    if (!persistentStoreCoordinator_) {
        if (const auto failure = prepareDataFolder()) presentAndAbort(*failure);
        if (const auto failure = openStore()) presentAndAbort(*failure);
    }
    return persistentStoreCoordinator_;
}

void PersistentStoreStack::setPersistentStoreCoordinator(std::shared_ptr<PersistentStoreCoordinator> value) {
    persistentStoreCoordinator_ = std::move(value);
}

const std::shared_ptr<ManagedObjectContext>& PersistentStoreStack::managedObjectContext() {
    if (!managedObjectContext_) {
        managedObjectContext_ = std::make_shared<ManagedObjectContext>(persistentStoreCoordinator());
    }
    return managedObjectContext_;
}

void PersistentStoreStack::setManagedObjectContext(std::shared_ptr<ManagedObjectContext> value) {
    managedObjectContext_ = std::move(value);
}

std::optional<PersistentStoreStack::StoreFailure> PersistentStoreStack::prepareDataFolder() {
    const std::filesystem::path& folder = applicationDocumentsDirectory();
    struct stat status {};
    if (::stat(folder.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return std::nullopt;
        return StoreFailure{"Expected a folder to store application data, found a file " + folder.string() + ".", {}};
    }
    StoreFailure failure;
    const int missing = errno;
    failure.underlying = applicationError(systemProblem("Could not look at " + folder.string(), missing));
    if (missing != ENOENT) return failure;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error) return std::nullopt;
    failure.underlying =
        applicationError(systemProblem("Could not create the folder " + folder.string(), error.value()));
    return failure;
}

std::optional<PersistentStoreStack::StoreFailure> PersistentStoreStack::openStore() {
    auto coordinator = std::make_shared<PersistentStoreCoordinator>(managedObjectModel());
    StoreFailure failure;
    const auto added = coordinator->addPersistentStore(applicationDocumentsDirectory() / "CocoaAppCD.storedata");
    if (!added) {
        failure.underlying = applicationError(added.problem());
        return failure;
    }
    persistentStoreCoordinator_ = std::move(coordinator);
    return std::nullopt;
}

void PersistentStoreStack::presentAndAbort(const StoreFailure& failure) {
    // frozen: F72
    ApplicationError error{"YOUR_ERROR_DOMAIN", 9999, "Failed to initialize the application's saved data",
                           failure.reason, nullptr};
    if (failure.underlying) error.underlying = std::make_shared<const ApplicationError>(*failure.underlying);
    alerts_.presentError(error);
    stopProcess();
}

}  // namespace kestrav
