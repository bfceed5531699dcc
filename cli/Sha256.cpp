#include "cli/Sha256.h"

#include <algorithm>
#include <bit>

namespace kestrav {
namespace {

constexpr std::array<std::uint32_t, 64> kConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

/// Big-endian, as the standard has it.
std::uint32_t wordAt(std::span<const std::byte> block, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word = word << 8U | std::to_integer<std::uint32_t>(block[at + i]);
    return word;
}

std::array<std::uint32_t, 64> schedule(std::span<const std::byte> block) {
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < 16; ++i)
        words[i] = wordAt(block, 4 * i);
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t early = words[i - 15];
        const std::uint32_t late = words[i - 2];
        const std::uint32_t s0 = std::rotr(early, 7) ^ std::rotr(early, 18) ^ (early >> 3U);
        const std::uint32_t s1 = std::rotr(late, 17) ^ std::rotr(late, 19) ^ (late >> 10U);
        words[i] = words[i - 16] + s0 + words[i - 7] + s1;
    }
    return words;
}

}  // namespace

void Sha256::takeBlock(std::span<const std::byte> block) {
    const auto words = schedule(block);
    auto [a, b, c, d, e, f, g, h] = state_;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t first = h + s1 + ((e & f) ^ (~e & g)) + kConstants[i] + words[i];
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t second = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> mixed{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state_.size(); ++i)
        state_[i] += mixed[i];
}

void Sha256::take(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const std::size_t held = taken_ % kBlock;
        const std::size_t count = std::min(kBlock - held, bytes.size());
        std::ranges::copy(bytes.first(count), rest_.begin() + static_cast<std::ptrdiff_t>(held));
        taken_ += count;
        bytes = bytes.subspan(count);
        if (held + count == kBlock) takeBlock(rest_);
    }
}

std::string Sha256::digits() {
    const std::uint64_t bits = taken_ * 8;
    const std::array<std::byte, 1> mark{std::byte{0x80}};
    const std::array<std::byte, 1> zero{};
    take(mark);
    while (taken_ % kBlock != kBlock - 8)
        take(zero);
    std::array<std::byte, 8> length{};
    for (unsigned i = 0; i < 8; ++i)
        length[i] = static_cast<std::byte>(bits >> (56 - 8 * i));
    take(length);
    std::string digits;
    for (const std::uint32_t word : state_)
        for (int shift = 28; shift >= 0; shift -= 4)
            digits += "0123456789abcdef"[word >> static_cast<unsigned>(shift) & 15U];
    return digits;
}

}  // namespace kestrav
