#include "json/tree/dataWithJSONObject.h"

#include <vector>

#include "base/utf8.h"
#include "json/tree/TextOutput.h"
#include "json/tree/TreeMapNode.h"

namespace kestrav {
namespace {

bool isContainer(const Tree& tree) {
    return tree.isList() || tree.isMap();
}

/// A list or map that is being written. Its parts lie side by side: elements, or each key before its value.
struct Level {
    const Tree* next;
    const Tree* end;
    bool isMap;
};

Level levelOf(const Tree& container) {
    if (container.isMap()) {
        auto* node = TreeNodes::node<TreeMapNode>(container);
        if (node == nullptr) return {nullptr, nullptr, true};
        return {node->parts(), node->parts() + std::size_t{2} * node->size, true};
    }
    auto* node = TreeNodes::node<TreeListNode>(container);
    if (node == nullptr) return {nullptr, nullptr, false};
    return {node->elements(), node->elements() + node->size, false};
}

/// The next part of the innermost level that has one; the levels that have none any more are left. None at the end.
const Tree* nextPart(std::vector<Level>& levels) {
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next != level.end) return level.next++;
        levels.pop_back();
    }
    return nullptr;
}

/// The end of a line and the indentation of the next one, at its deepest 64 levels.
constexpr std::string_view kLineBreak =
    "\n                                                                "
    "                                                                ";
static_assert(kLineBreak.size() == 1 + 2 * 64);

/// Writes one tree. Fails at the first part that has no form in JSON, so that no pass before it is needed.
class TreeWriter {
  public:
    explicit TreeWriter(bool pretty) : pretty_(pretty) {}

    bool write(const Tree& top) {
        open(top);
        while (!levels_.empty()) {
            const bool done = levels_.back().isMap ? writeMembers() : writeElements();
            if (!done) return false;
        }
        return true;
    }
    std::string take() { return output_.take(); }

  private:
    bool open(const Tree& container) {
        levels_.push_back(levelOf(container));
        output_.put(levels_.back().isMap ? '{' : '[');
        atFirst_ = true;
        return true;
    }

    bool close() {
        const bool isMap = levels_.back().isMap;
        levels_.pop_back();
        if (pretty_ && !atFirst_) breakLine();
        output_.put(isMap ? '}' : ']');
        atFirst_ = false;
        return true;
    }

    /// Writes the innermost list on, to its end or to the list or map that is the innermost one from then on.
    bool writeElements() {
        Level& level = levels_.back();
        while (level.next != level.end) {
            const Tree& element = *level.next++;
            separate();
            if (isContainer(element)) return open(element);
            if (!writeScalar(element)) return false;
        }
        return close();
    }

    bool writeMembers() {
        Level& level = levels_.back();
        while (level.next != level.end) {
            const Tree& key = level.next[0];
            const Tree& value = level.next[1];
            level.next += 2;
            separate();
            if (!output_.putText(key)) return false;
            output_.put(':');
            if (pretty_) output_.put(' ');
            if (isContainer(value)) return open(value);
            if (!writeScalar(value)) return false;
        }
        return close();
    }

    bool writeScalar(const Tree& tree) { return tree.isText() ? output_.putText(tree) : output_.putLeaf(tree); }

    void separate() {
        if (!atFirst_) output_.put(',');
        if (pretty_) breakLine();
        atFirst_ = false;
    }

    void breakLine() {
        // A deep tree would otherwise be written as little but white space, growing with the square of its depth.
        output_.put(kLineBreak.substr(0, 1 + 2 * levels_.size()));
    }

    bool pretty_;
    bool atFirst_ = true;
    std::vector<Level> levels_;
    TextOutput output_;
};

bool isValidLeaf(const Tree& tree) {
    switch (tree.kind()) {
        case Tree::Kind::null:
        case Tree::Kind::boolean:
            return true;
        case Tree::Kind::number:
            return tree.number()->isFinite();
        case Tree::Kind::text:
            return isValidUTF8(*tree.text());
        case Tree::Kind::list:
        case Tree::Kind::map:
        case Tree::Kind::object:
            return false;
    }
    return false;
}

}  // namespace

bool isValidJSONObject(const Tree& tree) {
    if (!isContainer(tree)) return false;
    std::vector<Level> levels{levelOf(tree)};
    while (const Tree* part = nextPart(levels)) {
        // Keys are judged like any other text.
        if (isContainer(*part)) {
            levels.push_back(levelOf(*part));
        } else if (!isValidLeaf(*part)) {
            return false;
        }
    }
    return true;
}

std::string dataWithJSONObject(const Tree& tree, WritingOptions options) {
    if (!isContainer(tree)) throw InvalidJSONObject();
    TreeWriter writer(contains(options, WritingOptions::prettyPrinted));
    if (!writer.write(tree)) throw InvalidJSONObject();
    return writer.take();
}

}  // namespace kestrav
