#include "services/image/RunningDigest.h"

#include <new>
#include <xxhash.h>

namespace kestrav {

void RunningDigest::Free::operator()(XXH3_state_s* state) const noexcept {
    ::XXH3_freeState(state);
}

RunningDigest::RunningDigest() : state_(::XXH3_createState()) {
    if (!state_) throw std::bad_alloc();
    ::XXH3_128bits_reset(state_.get());
}

void RunningDigest::take(std::span<const std::byte> bytes) {
    ::XXH3_128bits_update(state_.get(), bytes.data(), bytes.size());
}

ImageDigest RunningDigest::value() const {
    const XXH128_hash_t digest = ::XXH3_128bits_digest(state_.get());
    return {digest.low64, digest.high64};
}

}  // namespace kestrav
