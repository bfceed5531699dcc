#include "json/value/JSONError.h"

namespace kestrav {

std::string JSONError::localizedDescription() const {
    const auto entry = userInfo.find(json::LocalizedDescriptionKey);
    return entry == userInfo.end() ? std::string() : entry->second;
}

JSONError makeJSONError(std::int64_t code, std::string_view message) {
    return {std::string(json::ErrorDomain), code, {{std::string(json::LocalizedDescriptionKey), std::string(message)}}};
}

}  // namespace kestrav
