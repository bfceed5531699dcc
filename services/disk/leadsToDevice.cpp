#include "services/disk/leadsToDevice.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace kestrav {

bool leadsToDevice(const std::string& path, const std::vector<dev_t>& numbers) {
    struct statx status {};
    constexpr int kQuietly = AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT;
    if (::statx(AT_FDCWD, path.c_str(), kQuietly, STATX_TYPE, &status) != 0) return false;
    const auto contains = [&numbers](dev_t number) {
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    };
    if (contains(makedev(status.stx_dev_major, status.stx_dev_minor))) return true;
    return S_ISBLK(status.stx_mode) && contains(makedev(status.stx_rdev_major, status.stx_rdev_minor));
}

}  // namespace kestrav
