#include "services/image/PlacesInMemory.h"

#include <fcntl.h>
#include <string>
#include <sys/mman.h>

namespace kestrav {

PlacesInMemory::PlacesInMemory() : file_(::memfd_create("places in memory", MFD_CLOEXEC)) {}

std::optional<PlacesInMemory::Place> PlacesInMemory::take() const {
    if (!file_) return std::nullopt;
    // A lock belongs to the opened file, which forked processes share: each opens it anew.
    UniqueFd own(::open(("/proc/self/fd/" + std::to_string(file_.get())).c_str(), O_RDWR | O_CLOEXEC));
    if (!own) return std::nullopt;
    for (int place = 0; place < kPlaces; ++place) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = place;
        lock.l_len = 1;
        if (::fcntl(own.get(), F_OFD_SETLK, &lock) == 0) return Place(std::move(own));
    }
    return std::nullopt;
}

}  // namespace kestrav
