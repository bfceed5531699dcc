#include "services/jobs/endLastForWantOfMemory.h"

#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"

namespace kestrav {
namespace {

bool adjust(std::string_view score) {
    const UniqueFd file(::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    return file && retry([&] { return ::write(file.get(), score.data(), score.size()); }) > 0;
}

}  // namespace

void endFirstForWantOfMemory() {
    adjust("100");
}

void endLastForWantOfMemory() {
    // What the units begin with, so that no right is needed for it; elsewhere what most processes have.
    if (!adjust("-900")) adjust("0");
}

}  // namespace kestrav
