#include "json/Tree.h"

#include "base/stopProcess.h"
#include "json/TreeNodes.h"

namespace kestrav {

Tree::Tree(std::string_view text) {
    const TreeWords words = TreeNodes::text(text);
    payload_ = words.payload;
    meta_ = words.meta;
}

Tree::Tree(const Number& number) {
    switch (number.kind()) {
        case Number::Kind::boolean:
            *this = Tree(number.integer() != 0);
            break;
        case Number::Kind::integer:
            *this = Tree(number.integer());
            break;
        case Number::Kind::unsignedInteger:
            *this = Tree(number.unsignedInteger());
            break;
        case Number::Kind::floating:
            *this = Tree(number.floating());
            break;
        case Number::Kind::decimal:
            *this = Tree(number.decimal());
            break;
    }
}

Tree::Tree(const Decimal& number) {
    auto* node = new TreeDecimalNode{{}, number};
    *this = TreeNodes::adopt(TreeNodes::wordsOf(Form::decimal, node));
}

Tree::Tree(std::shared_ptr<const TreeObject> object) {
    if (!object) return;
    auto* node = new TreeObjectNode{{}, std::move(object)};
    *this = TreeNodes::adopt(TreeNodes::wordsOf(Form::object, node));
}

Tree Tree::list(std::vector<Tree> elements) {
    Tree tree(0, metaOf(Form::list));
    if (elements.empty()) return tree;
    TreeListNode* node = TreeNodes::ownList(tree, elements.size());
    for (Tree& element : elements)
        new (node->elements() + node->size++) Tree(std::move(element));
    return tree;
}

std::optional<bool> Tree::boolean() const noexcept {
    if (form() != Form::boolean) return std::nullopt;
    return payload_ != 0;
}

std::optional<Number> Tree::number() const noexcept {
    if (kind() != Kind::number) return std::nullopt;
    if (form() == Form::integer) return Number(static_cast<std::int64_t>(payload_));
    if (form() == Form::unsignedInteger) return Number(payload_);
    if (form() == Form::floating) return Number(std::bit_cast<double>(payload_));
    return Number(TreeNodes::node<TreeDecimalNode>(*this)->value);
}

std::shared_ptr<const TreeObject> Tree::object() const {
    if (form() != Form::object) return nullptr;
    return TreeNodes::node<TreeObjectNode>(*this)->value;
}

std::size_t Tree::size() const noexcept {
    if (payload_ == 0) return 0;
    if (isList()) return TreeNodes::node<TreeListNode>(*this)->size;
    return isMap() ? TreeNodes::node<TreeMapNode>(*this)->size : 0;
}

const Tree& Tree::element(std::size_t index) const noexcept {
    require(isList() && index < size());
    return TreeNodes::node<TreeListNode>(*this)->elements()[index];
}

const Tree* Tree::member(std::string_view key) const noexcept {
    if (!isMap() || payload_ == 0) return nullptr;
    return TreeNodes::find(TreeNodes::node<TreeMapNode>(*this), TreeNodes::key(key));
}

std::string_view Tree::keyAt(std::size_t index) const noexcept {
    require(isMap() && index < size());
    return TreeNodes::textView(TreeNodes::node<TreeMapNode>(*this)->key(index));
}

const Tree& Tree::valueAt(std::size_t index) const noexcept {
    require(isMap() && index < size());
    return TreeNodes::node<TreeMapNode>(*this)->value(index);
}

void Tree::append(Tree value) {
    require(isList());
    TreeListNode* node = TreeNodes::ownList(*this, 1);
    new (node->elements() + node->size++) Tree(std::move(value));
}

void Tree::setElement(std::size_t index, Tree value) {
    Tree* element = mutableElement(index);
    require(element != nullptr);
    *element = std::move(value);
}

void Tree::setMember(std::string_view key, Tree value) {
    require(isMap());
    Tree name(key);  // before anything moves: `key` may lie in this tree
    TreeMapNode* node = TreeNodes::ownMap(*this, 1);
    if (Tree* found = TreeNodes::find(node, name)) {
        *found = std::move(value);
    } else {
        TreeNodes::add(node, std::move(name), std::move(value));
    }
}

Tree* Tree::mutableElement(std::size_t index) {
    if (!isList() || index >= size()) return nullptr;
    return TreeNodes::ownList(*this, 0)->elements() + index;
}

Tree* Tree::mutableMember(std::string_view key) {
    if (member(key) == nullptr) return nullptr;
    const Tree name(key);  // before anything moves: `key` may lie in this tree
    return TreeNodes::find(TreeNodes::ownMap(*this, 0), name);
}

void Tree::retain() const noexcept {
    if (payload_ == 0) return;
    // Whoever copies holds a reference already, so nothing has to be seen in order here.
    TreeNodes::node<TreeNode>(*this)->references.fetch_add(1, std::memory_order_relaxed);
}

void Tree::release() noexcept {
    if (payload_ != 0) TreeNodes::release(form(), TreeNodes::node<TreeNode>(*this));
}

}  // namespace kestrav
