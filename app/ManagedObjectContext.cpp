#include "app/ManagedObjectContext.h"

#include <algorithm>

#include "app/PersistentStoreCoordinator.h"

namespace kestrav {

ManagedObjectContext::ManagedObjectContext(std::shared_ptr<PersistentStoreCoordinator> coordinator)
    : coordinator_(std::move(coordinator)),
      records_(coordinator_->store()->records()) {}

std::optional<std::string> ManagedObjectContext::value(const std::string& name) const {
    const auto found = records_.find(name);
    return found == records_.end() ? std::nullopt : std::optional(found->second);
}

void ManagedObjectContext::setValue(const std::string& name, std::optional<std::string> newValue) {
    undoManager_.registerUndo([this, name, old = value(name)] { replace(name, old); });
    replace(name, std::move(newValue));
}

void ManagedObjectContext::replace(const std::string& name, std::optional<std::string> newValue) {
    if (newValue) {
        records_.insert_or_assign(name, std::move(*newValue));
    } else {
        records_.erase(name);
    }
}

bool ManagedObjectContext::commitEditing() {
    return std::ranges::all_of(editors_, [](Editor* editor) { return editor->commitEditing(); });
}

bool ManagedObjectContext::hasChanges() const {
    return records_ != coordinator_->store()->records();
}

Outcome<void> ManagedObjectContext::save() {
    return coordinator_->store()->save(records_);
}

}  // namespace kestrav
