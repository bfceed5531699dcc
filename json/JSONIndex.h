#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrav {

/// A position within a value: of a list's elements, of a map's members, or the one position of everything else. Equal
/// only when of the same case and the same position; two `null` positions always are.
/// `Of` keeps positions among JSON values apart from those among their objects.
template <class Of>
class JSONPosition {
  public:
    enum class Case : std::uint8_t { array, dictionary, null };

    static constexpr JSONPosition array(std::size_t position) noexcept { return {Case::array, position}; }
    static constexpr JSONPosition dictionary(std::size_t position) noexcept { return {Case::dictionary, position}; }
    static constexpr JSONPosition null() noexcept { return {Case::null, 0}; }

    constexpr Case kind() const noexcept { return case_; }
    constexpr std::size_t position() const noexcept { return position_; }
    /// The position after this one; `null` has only itself.
    constexpr JSONPosition next() const noexcept { return {case_, case_ == Case::null ? 0 : position_ + 1}; }

    friend constexpr bool operator==(const JSONPosition&, const JSONPosition&) noexcept = default;

  private:
    constexpr JSONPosition(Case kind, std::size_t position) noexcept : case_(kind), position_(position) {}

    Case case_;
    std::size_t position_;
};

class JSON;
class Tree;
using JSONIndex = JSONPosition<JSON>;
using JSONRawIndex = JSONPosition<Tree>;

}  // namespace kestrav
