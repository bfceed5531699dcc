#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

#include "services/disk/DiskBytes.h"

namespace kestrav {

/// A buffer that a disk can be read into and written from. Its bytes are not initialised.
class AlignedBuffer {
  public:
    /// `size` is a multiple of DiskBytes::bufferAlignment. Throws std::bad_alloc.
    explicit AlignedBuffer(std::size_t size)
        : bytes_(static_cast<std::byte*>(std::aligned_alloc(DiskBytes::kBufferAlignment, size))),
          size_(size) {
        if (!bytes_) throw std::bad_alloc();
    }

    std::span<std::byte> first(std::size_t count) { return std::span(bytes_.get(), size_).first(count); }

  private:
    struct Free {
        void operator()(std::byte* bytes) const noexcept { std::free(bytes); }
    };
    std::unique_ptr<std::byte[], Free> bytes_;
    std::size_t size_;
};

}  // namespace kestrav
