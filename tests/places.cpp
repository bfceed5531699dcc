#include "tests/places.h"

namespace kestrav::places {

std::string ofSource(const std::string& name) {
    return KESTRAV_SOURCE_FOLDER "/" + name;
}

std::string ofProgram(const std::string& name) {
    return KESTRAV_PROGRAM_FOLDER "/" + name;
}

std::string ofBuilt(const std::string& name) {
    return KESTRAV_BUILD_FOLDER "/" + name;
}

}  // namespace kestrav::places
