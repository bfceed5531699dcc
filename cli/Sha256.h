#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kestrav {

/// The SHA-256 digest (FIPS 180-4) of bytes that come piece by piece.
class Sha256 {
  public:
    void take(std::span<const std::byte> bytes);

    /// Of all that was taken, as 64 digits from 0 to f. The last that is asked of an object.
    std::string digits();

  private:
    static constexpr std::size_t kBlock = 64;

    void takeBlock(std::span<const std::byte> block);

    std::array<std::uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                        0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::byte, kBlock> rest_{};  ///< what is not a whole block yet
    std::uint64_t taken_ = 0;               ///< bytes
};

}  // namespace kestrav
