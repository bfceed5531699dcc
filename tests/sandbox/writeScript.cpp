#include "tests/sandbox/writeScript.h"

#include <fstream>

namespace kestrav {

void writeScript(const std::filesystem::path& path, const std::string& script) {
    std::filesystem::remove(path);
    std::ofstream(path) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(path, std::filesystem::perms(0755));
}

}  // namespace kestrav
