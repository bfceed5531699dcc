#include "json/value/lookupError.h"

#include <string>

namespace kestrav {
namespace {

JSONError indexError(const Number& index, bool isList) {
    const std::string element = "Array[" + index.stringValue() + "]";
    if (isList) return makeJSONError(json::ErrorIndexOutOfBounds, element + " is out of bounds");
    return makeJSONError(json::ErrorWrongType, element + " failure, It is not an array");
}

JSONError keyError(std::string_view key, bool isMap) {
    const std::string member = "Dictionary[\"" + std::string(key) + "\"]";
    if (isMap) return makeJSONError(json::ErrorNotExist, member + " does not exist");
    // frozen: F73
    return makeJSONError(json::ErrorWrongType, member + " failure, It is not an dictionary");
}

}  // namespace

JSONError lookupError(const Tree& container, const JSONKey& key) {
    if (const auto index = key.object().number()) return indexError(*index, container.isList());
    return keyError(*key.key(), container.isMap());
}

}  // namespace kestrav
