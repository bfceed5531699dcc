#include "json/tree/Tree.h"

#include "base/stopProcess.h"
#include "json/tree/TreeDecimalNode.h"
#include "json/tree/TreeMapNode.h"
#include "json/tree/TreeObjectNode.h"
#include "json/tree/releaseNode.h"
#include "json/tree/sameContent.h"
#include "json/tree/unlentCopy.h"

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
    auto* node = new TreeDecimalNode(number);
    *this = TreeNodes::adopt(TreeNodes::wordsOf(Form::decimal, node));
}

Tree::Tree(std::shared_ptr<const TreeObject> object) {
    if (!object) return;
    auto* node = new TreeObjectNode(std::move(object));
    *this = TreeNodes::adopt(TreeNodes::wordsOf(Form::object, node));
}

Tree Tree::list(std::vector<Tree> elements) {
    Tree tree(0, metaOf(Form::list));
    if (elements.empty()) return tree;
    TreeListNode* node = TreeListNode::own(tree, elements.size());
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
    return TreeNodes::node<TreeMapNode>(*this)->find(TreeKey::of(key));
}

std::string_view Tree::keyAt(std::size_t index) const noexcept {
    require(isMap() && index < size());
    return TreeNodes::textView(TreeNodes::node<TreeMapNode>(*this)->key(index));
}

const Tree& Tree::valueAt(std::size_t index) const noexcept {
    require(isMap() && index < size());
    return TreeNodes::node<TreeMapNode>(*this)->value(index);
}

void Tree::append(Tree value) & {
    require(isList());
    TreeListNode* node = TreeListNode::own(*this, 1);
    new (node->elements() + node->size++) Tree(std::move(value));
}

void Tree::insert(std::size_t index, Tree value) & {
    require(isList() && index <= size());
    TreeListNode::own(*this, 1)->insert(index, std::move(value));
}

void Tree::setElement(std::size_t index, Tree value) & {
    Tree* element = TreeNodes::ownElement(*this, index);
    require(element != nullptr);
    *element = std::move(value);
}

void Tree::removeElement(std::size_t index) & {
    require(isList() && index < size());
    TreeListNode::own(*this, 0)->remove(index);
}

void Tree::setMember(std::string_view key, Tree value) & {
    require(isMap());
    if (Tree* found = TreeNodes::ownMember(*this, key)) {
        *found = std::move(value);
        return;
    }
    Tree name(key);  // before anything moves: `key` may lie in this tree
    TreeMapNode::own(*this, 1)->add(std::move(name), std::move(value));
}

void Tree::removeMember(std::string_view key) & {
    require(isMap());
    const Tree* found = member(key);
    if (found == nullptr) return;
    const auto position = static_cast<std::size_t>(found - TreeNodes::node<TreeMapNode>(*this)->parts()) / 2;
    TreeMapNode::own(*this, 0)->remove(position);
}

Tree* Tree::mutableElement(std::size_t index) & {
    Tree* element = TreeNodes::ownElement(*this, index);
    if (element != nullptr) TreeNodes::node<TreeNode>(*this)->setLent(true);
    return element;
}

Tree* Tree::mutableMember(std::string_view key) & {
    Tree* member = TreeNodes::ownMember(*this, key);
    if (member != nullptr) TreeNodes::node<TreeNode>(*this)->setLent(true);
    return member;
}

void Tree::share() {
    auto* node = TreeNodes::node<TreeNode>(*this);
    if (node->isLent()) {
        const TreeWords copy = unlentCopy(form(), node);
        payload_ = copy.payload;
    } else {
        node->retain();
    }
}

void Tree::release() noexcept {
    releaseNode(form(), TreeNodes::node<TreeNode>(*this));
}

bool operator==(const Tree& left, const Tree& right) {
    return sameContent(left, right);
}

}  // namespace kestrav
