#include "base/late/LateLibrary.h"

#include <cerrno>
#include <dlfcn.h>
#include <iostream>
#include <string>
#include <unistd.h>

namespace kestrav {
namespace {

[[noreturn]] void endWithoutLibrary() {
    constexpr int kStatusOfTheLoader = 127;
    // Copied first: the words are gone once anything else has been looked up.
    const char* const words = ::dlerror();
    const std::string reason = words != nullptr ? words : "unknown error";
    std::cerr << program_invocation_short_name << ": error while loading shared libraries: " << reason
              << ". Install the package of that library." << std::endl;
    ::_exit(kStatusOfTheLoader);
}

}  // namespace

void* LateLibrary::find(const char* function) const {
    // Loaded once: from then on this only counts.
    void* const library = ::dlopen(name_, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) endWithoutLibrary();
    void* const found = ::dlsym(library, function);
    if (found == nullptr) endWithoutLibrary();
    return found;
}

}  // namespace kestrav
