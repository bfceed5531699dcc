#include "tests/sandbox/standInFor.h"

#include <sys/mount.h>

#include "tests/sandbox/writeScript.h"

namespace kestrav {

bool standInFor(const std::filesystem::path& program, const std::string& script) {
    const std::filesystem::path stand = "/run" / program.filename();
    writeScript(stand, script);
    return ::mount(stand.c_str(), program.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

}  // namespace kestrav
