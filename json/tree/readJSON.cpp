#include "json/tree/readJSON.h"

#include "json/tree/DocumentReader.h"

namespace kestrav {

std::variant<Tree, ReadError> readJSON(std::string_view bytes, ReadingOptions options) {
    DocumentReader reader(bytes);
    std::optional<Tree> tree = reader.read();
    if (!tree) return reader.failure();
    if (!tree->isList() && !tree->isMap() && !contains(options, ReadingOptions::allowFragments)) {
        return ReadError{"neither a list nor a map at the top", 0};
    }
    return std::move(*tree);
}

}  // namespace kestrav
