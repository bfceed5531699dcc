#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav {

/// What a store may hold. The one model there is, "Kestrav", has no entities yet, so it comes down to a name.
class ManagedObjectModel {
  public:
    /// Reads a model from its file's content; absent when that is not one.
    static std::optional<ManagedObjectModel> parse(std::string_view content);

    const std::string& name() const { return name_; }

  private:
    explicit ManagedObjectModel(std::string name) : name_(std::move(name)) {}

    std::string name_;
};

}  // namespace kestrav
