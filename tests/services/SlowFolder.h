#pragma once

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// A user-space file system that may stop answering, with one file in it, "image", that holds zeros. It is mounted
/// in the process's view of mounts, which should be a private one. Needs root and a kernel with FUSE.
class SlowFolder {
  public:
    struct Behaviour {
        std::uint64_t size = 0;
        bool answersOpening = true;
        std::optional<std::uint64_t> stallsFrom = std::nullopt;  ///< reading from this byte on is never answered
        std::optional<std::uint64_t> failsFrom = std::nullopt;   ///< reading from this byte on is an error,
        int failsWith = EIO;                                     ///< this one
    };

    static bool isPossible();

    /// `place` is an empty folder. Throws std::runtime_error.
    SlowFolder(std::string place, const Behaviour& behaviour);
    ~SlowFolder() { end(); }
    SlowFolder(const SlowFolder&) = delete;
    SlowFolder& operator=(const SlowFolder&) = delete;

    std::string image() const { return place_ + "/image"; }
    /// Takes it away; who still waits for it gets an error.
    void end();

  private:
    std::string place_;
    pid_t server_ = -1;
};

}  // namespace kestrav
