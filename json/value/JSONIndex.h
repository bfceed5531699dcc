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
    /// Of what it is a position.
    enum class Case : std::uint8_t {
        array,       ///< a list
        dictionary,  ///< a map
        null,        ///< anything else: the single position there
    };

    /// Positions by case. Counted from 0.
    static constexpr JSONPosition array(std::size_t position) noexcept { return {Case::array, position}; }
    static constexpr JSONPosition dictionary(std::size_t position) noexcept { return {Case::dictionary, position}; }
    static constexpr JSONPosition null() noexcept { return {Case::null, 0}; }

    /// The same position, among others.
    template <class Other>
    explicit constexpr JSONPosition(const JSONPosition<Other>& other) noexcept
        : case_(static_cast<Case>(other.kind())),
          position_(other.position()) {}

    /// Of what it is a position.
    constexpr Case kind() const noexcept { return case_; }
    /// The position, counted from 0; 0 for `null`.
    constexpr std::size_t position() const noexcept { return position_; }
    /// The position after this one; `null` has only itself.
    constexpr JSONPosition next() const noexcept { return {case_, case_ == Case::null ? 0 : position_ + 1}; }

    /// The same case and position.
    friend constexpr bool operator==(const JSONPosition&, const JSONPosition&) noexcept = default;

  private:
    constexpr JSONPosition(Case kind, std::size_t position) noexcept : case_(kind), position_(position) {}

    Case case_;
    std::size_t position_;
};

class JSON;
class Tree;
/// A position among the members of a JSON value.
using JSONIndex = JSONPosition<JSON>;
/// A position among the objects of those members.
using JSONRawIndex = JSONPosition<Tree>;

}  // namespace kestrav
