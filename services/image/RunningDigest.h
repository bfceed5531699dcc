#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "services/image/ImageBytes.h"

struct XXH3_state_s;

namespace kestrav {

/// The digest of bytes that come piece by piece.
class RunningDigest {
  public:
    /// Throws std::bad_alloc.
    RunningDigest();

    void take(std::span<const std::byte> bytes);
    /// Of all that was taken so far.
    ImageDigest value() const;

  private:
    struct Free {
        void operator()(XXH3_state_s* state) const noexcept;
    };
    std::unique_ptr<XXH3_state_s, Free> state_;
};

}  // namespace kestrav
