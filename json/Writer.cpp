#include "json/Writer.h"

#include <vector>

#include "base/utf8.h"
#include "json/TextOutput.h"
#include "json/TreeNodes.h"

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
        return {node->parts(), node->parts() + 2 * node->size, true};
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

/// About how much text the tree takes: the texts are counted, the rest is guessed. A wrong guess costs time alone.
std::size_t guessedSize(const Tree& top) {
    constexpr std::size_t kTextAndComma = 3;
    constexpr std::size_t kLeafAndComma = 10;
    std::size_t size = 0;
    std::vector<Level> levels{levelOf(top)};
    while (const Tree* part = nextPart(levels)) {
        if (const auto text = part->text()) {
            size += text->size() + kTextAndComma;
        } else if (isContainer(*part)) {
            size += kTextAndComma;
            levels.push_back(levelOf(*part));
        } else {
            size += kLeafAndComma;
        }
    }
    return size;
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
        output_.reserve(guessedSize(top));
        open(top);
        while (true) {
            const Level& level = levels_.back();
            if (level.next == level.end) {
                close();
                if (levels_.empty()) return true;
                continue;
            }
            if (!writeNext()) return false;
        }
    }
    std::string take() { return output_.take(); }

  private:
    void open(const Tree& container) {
        levels_.push_back(levelOf(container));
        output_.put(levels_.back().isMap ? '{' : '[');
        atFirst_ = true;
    }

    void close() {
        const bool isMap = levels_.back().isMap;
        levels_.pop_back();
        if (pretty_ && !atFirst_) breakLine();
        output_.put(isMap ? '}' : ']');
        atFirst_ = false;
    }

    bool writeNext() {
        Level& level = levels_.back();
        if (!atFirst_) output_.put(',');
        if (pretty_) breakLine();
        atFirst_ = false;
        if (level.isMap) {
            if (!output_.putText(*level.next++)) return false;
            output_.put(':');
            if (pretty_) output_.put(' ');
        }
        const Tree& value = *level.next++;
        if (value.isText()) return output_.putText(value);
        if (value.isList() || value.isMap()) {
            open(value);
            return true;
        }
        return output_.putLeaf(value);
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
