#include "app/PersistentStoreCoordinator.h"

#include "app/ManagedObjectModel.h"

namespace kestrav {

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model)
    : model_(std::move(model)) {}

Outcome<void> PersistentStoreCoordinator::addPersistentStore(const std::filesystem::path& file) {
    PersistentStore store(file, model_->name());
    if (auto opened = store.open(); !opened) return opened;
    store_ = std::move(store);
    return {};
}

}  // namespace kestrav
