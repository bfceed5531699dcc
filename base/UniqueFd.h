#pragma once

#include <unistd.h>
#include <utility>

namespace kestrav {

/// Owns one file descriptor and closes it once. -1 means that it owns none.
/// Movable, not copyable; may be handed to another thread, not shared between two.
class UniqueFd {
  public:
    /// Owns nothing, `fd`, or what `other` owned.
    UniqueFd() noexcept = default;
    explicit UniqueFd(int fd) noexcept : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    /// What is owned, and whether anything is.
    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }

    /// Gives the descriptor up without closing it; the caller owns it from then on.
    [[nodiscard]] int release() noexcept { return std::exchange(fd_, -1); }

    /// Closes what is owned, if anything, and owns `fd` instead.
    void reset(int fd = -1) noexcept {
        // close() is not repeated on EINTR: on Linux the descriptor is gone by then.
        if (const int old = std::exchange(fd_, fd); old >= 0) ::close(old);
    }

  private:
    int fd_ = -1;
};

}  // namespace kestrav
