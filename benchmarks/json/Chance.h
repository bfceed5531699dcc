#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

namespace kestrav::benchmark {

/// Chance that is the same on every run and machine: the generator of the standard gives the same numbers everywhere;
/// its distributions don't.
class Chance {
  public:
    std::uint64_t word() { return engine_(); }
    std::size_t below(std::size_t limit) { return engine_() % limit; }
    /// From 0 on and below 1, with all 53 bits.
    double part() { return static_cast<double>(word() >> 11U) * 0x1p-53; }
    template <class Item, std::size_t Count>
    const Item& oneOf(const Item (&items)[Count]) {
        return items[below(Count)];
    }

  private:
    std::mt19937_64 engine_{20240229};
};

inline std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

inline std::string shortest(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

}  // namespace kestrav::benchmark
