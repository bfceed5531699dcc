#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/tree/Number.h"

namespace kestrav {

/// Base of class instances that a tree can carry although JSON has no form for them.
class TreeObject {
  public:
    virtual ~TreeObject() = default;
};

/// An object tree: null, a boolean, a number, a text, a list, a map from text keys in the order of their arrival, or
/// some other object. A value of 16 bytes: short texts and numbers lie in it, everything else in a node that copies
/// share. Copying copies no node but those that mutableElement() has lent out; changing a tree first copies the nodes
/// on the way that others share, so a change is seen through this one value alone.
///
/// Copies of one tree may be used, changed and destroyed on different threads at once; one and the same Tree object
/// needs the usual care. Nothing here recurses, so depth is limited by memory alone. Texts are bytes meant as UTF-8;
/// the writer checks them. Views and references last until the tree they come from is changed or destroyed. Whoever
/// keeps a part of a document that was read keeps up to 64 KiB of what lay beside each of its lists, maps and texts.
/// A copy of a long list in which an element has been changed keeps the list that it was copied from, until it is
/// changed once more after nobody else has that.
class Tree {
  public:
    /// What a tree can hold.
    enum class Kind : std::uint8_t { null, boolean, number, text, list, map, object };

    /// Null, or the given value.
    Tree() noexcept = default;
    explicit Tree(std::same_as<bool> auto value) noexcept : payload_(value ? 1 : 0), meta_(metaOf(Form::boolean)) {}
    template <std::signed_integral Integer>
    explicit Tree(Integer value) noexcept
        : payload_(static_cast<std::uint64_t>(std::int64_t{value})),
          meta_(metaOf(Form::integer)) {}
    template <std::unsigned_integral Integer>
    requires(!std::same_as<Integer, bool>) explicit Tree(Integer value) noexcept
        : payload_(value),
          meta_(metaOf(Form::unsignedInteger)) {}
    explicit Tree(double value) noexcept
        : payload_(std::bit_cast<std::uint64_t>(value)),
          meta_(metaOf(Form::floating)) {}
    explicit Tree(std::string_view text);
    explicit Tree(const char* text) : Tree(std::string_view(text)) {}
    explicit Tree(const std::string& text) : Tree(std::string_view(text)) {}
    /// A boolean number becomes a boolean.
    explicit Tree(const Number& number);
    explicit Tree(const Decimal& number);
    /// A null pointer becomes null.
    explicit Tree(std::shared_ptr<const TreeObject> object);
    static Tree list() noexcept { return Tree(0, metaOf(Form::list)); }
    static Tree list(std::vector<Tree> elements);
    static Tree map() noexcept { return Tree(0, metaOf(Form::map)); }

    /// Copies share what lies below; what was moved from is null. A copy needs memory only where a pointer to change
    /// the original by has been handed out: see mutableElement().
    Tree(const Tree& other) : payload_(other.payload_), meta_(other.meta_) {
        if (other.hasNode() && payload_ != 0) share();
    }
    Tree(Tree&& other) noexcept : payload_(std::exchange(other.payload_, 0)), meta_(std::exchange(other.meta_, 0)) {}
    Tree& operator=(const Tree& other) {
        Tree copy(other);
        swap(copy);
        return *this;
    }
    Tree& operator=(Tree&& other) noexcept {
        Tree moved(std::move(other));
        swap(moved);
        return *this;
    }
    ~Tree() {
        if (hasNode() && payload_ != 0) release();
    }
    /// Changes places with `other`.
    void swap(Tree& other) noexcept {
        std::swap(payload_, other.payload_);
        std::swap(meta_, other.meta_);
    }

    /// What it holds.
    Kind kind() const noexcept { return kKinds[(meta_ >> kTagShift) & 15U]; }
    bool isNull() const noexcept { return form() == Form::null; }
    bool isText() const noexcept { return kind() == Kind::text; }
    bool isList() const noexcept { return is(Form::list); }
    bool isMap() const noexcept { return is(Form::map); }
    bool isObject() const noexcept { return is(Form::object); }

    /// What the tree holds, or nothing when it is of another kind.
    std::optional<bool> boolean() const noexcept;
    std::optional<Number> number() const noexcept;
    std::optional<std::string_view> text() const noexcept {
        if (form() == Form::shortText)
            return std::string_view(reinterpret_cast<const char*>(this), meta_ >> kSizeShift);
        if (form() == Form::longText) return std::string_view(longText(), meta_ & kLongSize);
        return std::nullopt;
    }
    std::shared_ptr<const TreeObject> object() const;

    /// The number of elements or members; 0 for every other kind.
    std::size_t size() const noexcept;
    /// The element at `index`. Stops the process unless this is a list with more than `index` elements.
    const Tree& element(std::size_t index) const noexcept;
    /// The member with that key; a null pointer when there is none or this isn't a map.
    const Tree* member(std::string_view key) const noexcept;
    /// Members by position, in order of their arrival. Stop the process unless this is a map with more than `index`.
    std::string_view keyAt(std::size_t index) const noexcept;
    const Tree& valueAt(std::size_t index) const noexcept;

    /// Changes. Each stops the process when this isn't a list, or a map, or has no such element. When there is no
    /// memory, the tree stays as it was. Only a tree that lasts can be changed; what a function has just returned
    /// can't.
    void append(Tree value) &;
    /// In front of the element at `index`, or at the end.
    void insert(std::size_t index, Tree value) &;
    void setElement(std::size_t index, Tree value) &;
    void removeElement(std::size_t index) &;
    /// Replaces the member's value where it stands, or adds the member at the end.
    void setMember(std::string_view key, Tree value) &;
    /// Takes the member away, the others keep their order; nothing happens when there is none of that key.
    void removeMember(std::string_view key) &;
    /// For changing what lies below: not shared with any other tree as long as the pointer may be used, which is until
    /// this tree is changed otherwise or destroyed. A copy made meanwhile is one of this list or map, element by
    /// element; so this is for changing one tree in many places, and setElement() for changing one place of many trees.
    /// Null pointer when there is no such.
    Tree* mutableElement(std::size_t index) &;
    Tree* mutableMember(std::string_view key) &;

    /// Equal in kind and content: numbers by exact value, lists in order, maps regardless of order, objects by
    /// identity. A boolean equals no number.
    friend bool operator==(const Tree& left, const Tree& right);

  private:
    friend class TreeNodes;

    /// How the two words are used; the low four bits of the top byte of `meta_`. From 8 on `payload_` is the address
    /// of a node or, for an empty list or map, 0.
    enum class Form : std::uint8_t {
        null = 0,
        boolean = 1,
        integer = 2,
        unsignedInteger = 3,
        floating = 4,
        shortText = 5,  ///< up to 15 bytes in place; their number in the high four bits of the top byte
        decimal = 8,
        longText = 9,  ///< the size in the low 56 bits of `meta_`
        list = 10,
        map = 11,
        object = 12,
    };
    /// The kind of each form; null where there is no such form.
    static constexpr Kind kKinds[16] = {
        Kind::null,   Kind::boolean, Kind::number, Kind::number, Kind::number, Kind::text, Kind::null, Kind::null,
        Kind::number, Kind::text,    Kind::list,   Kind::map,    Kind::object, Kind::null, Kind::null, Kind::null};
    static constexpr int kTagShift = 56;
    static constexpr int kSizeShift = 60;
    static constexpr std::size_t kShortText = 15;
    static constexpr std::uint64_t kLongSize = (std::uint64_t{1} << kTagShift) - 1;

    static constexpr std::uint64_t metaOf(Form form) noexcept { return static_cast<std::uint64_t>(form) << kTagShift; }
    Tree(std::uint64_t payload, std::uint64_t meta) noexcept : payload_(payload), meta_(meta) {}

    Form form() const noexcept { return static_cast<Form>((meta_ >> kTagShift) & 15U); }
    /// Not for short texts: of all other forms the high four bits are zero, and one byte decides.
    bool is(Form form) const noexcept { return meta_ >> kTagShift == static_cast<std::uint64_t>(form); }
    bool hasNode() const noexcept { return (meta_ >> (kTagShift + 3) & 1U) != 0; }
    /// A long text's bytes follow the count of its node's references.
    const char* longText() const noexcept { return address<const char>() + sizeof(std::uintptr_t); }
    template <class Node>
    Node* address() const noexcept {
        Node* node = nullptr;
        std::memcpy(&node, &payload_, sizeof payload_);
        return node;
    }
    void share();
    void release() noexcept;

    std::uint64_t payload_ = 0;
    std::uint64_t meta_ = 0;
};

static_assert(sizeof(Tree) == 16);
static_assert(sizeof(void*) == sizeof(std::uint64_t), "an address fills the first word");
static_assert(std::endian::native == std::endian::little, "a short text ends below the top byte of the second word");

}  // namespace kestrav
