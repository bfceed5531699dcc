#include "app/PersistentStoreCoordinator.h"

#include "app/ManagedObjectModel.h"

namespace kestrav {

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model)
    : model_(std::move(model)) {}

std::optional<ApplicationError> PersistentStoreCoordinator::addPersistentStore(const std::filesystem::path& file) {
    PersistentStore store(file, model_->name());
    if (auto error = store.open()) return error;
    store_ = std::move(store);
    return std::nullopt;
}

}  // namespace kestrav
