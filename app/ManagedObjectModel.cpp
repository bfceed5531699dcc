#include "app/ManagedObjectModel.h"

#include <pugixml.hpp>

namespace kestrav {

std::optional<ManagedObjectModel> ManagedObjectModel::parse(std::string_view content) {
    pugi::xml_document document;
    if (!document.load_buffer(content.data(), content.size())) return std::nullopt;
    std::string name = document.child("model").attribute("name").value();
    if (name.empty()) return std::nullopt;
    return ManagedObjectModel(std::move(name));
}

}  // namespace kestrav
