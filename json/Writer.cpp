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

/// The way down to where the work stands, in place of the call stack.
class Path {
  public:
    struct Step {
        const Tree* container;
        std::size_t next;
    };

    explicit Path(const Tree& top) { enter(top); }
    void enter(const Tree& container) { steps_.push_back({&container, 0}); }
    void leave() { steps_.pop_back(); }
    Step& last() { return steps_.back(); }
    std::size_t depth() const { return steps_.size(); }

  private:
    std::vector<Step> steps_;
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

/// Writes one tree. Fails at the first part that has no form in JSON, which makes a second pass for it needless.
class TreeWriter {
  public:
    explicit TreeWriter(bool pretty) : pretty_(pretty) {}

    bool write(const Tree& top) {
        Path path(top);
        output_.put(top.isMap() ? '{' : '[');
        while (path.depth() > 0) {
            Path::Step& step = path.last();
            if (step.next == step.container->size()) {
                close(step, path.depth() - 1);
                path.leave();
                continue;
            }
            const Tree* value = nextOf(step, path.depth());
            if (value == nullptr) return false;
            if (isContainer(*value)) {
                output_.put(value->isMap() ? '{' : '[');
                path.enter(*value);
            } else if (!output_.putLeaf(*value)) {
                return false;
            }
        }
        return true;
    }
    std::string take() { return output_.take(); }

  private:
    /// Writes what stands before the next value; a null pointer when its key can't be written.
    const Tree* nextOf(Path::Step& step, std::size_t depth) {
        const std::size_t position = step.next++;
        if (position > 0) output_.put(',');
        if (pretty_) breakLine(depth);
        if (step.container->isList()) return &step.container->element(position);
        if (!output_.putText(step.container->keyAt(position))) return nullptr;
        output_.put(pretty_ ? " : " : ":");
        return &step.container->valueAt(position);
    }

    void close(const Path::Step& step, std::size_t depth) {
        if (pretty_ && step.container->size() > 0) breakLine(depth);
        output_.put(step.container->isMap() ? '}' : ']');
    }

    void breakLine(std::size_t depth) {
        output_.put('\n');
        for (std::size_t level = 0; level < depth; ++level)
            output_.put("  ");
    }

    bool pretty_;
    TextOutput output_;
};

}  // namespace

bool isValidJSONObject(const Tree& tree) {
    if (!isContainer(tree)) return false;
    Path path(tree);
    while (path.depth() > 0) {
        Path::Step& step = path.last();
        if (step.next == step.container->size()) {
            path.leave();
            continue;
        }
        const std::size_t position = step.next++;
        const bool isMap = step.container->isMap();
        if (isMap && !isValidUTF8(step.container->keyAt(position))) return false;
        const Tree& value = isMap ? step.container->valueAt(position) : step.container->element(position);
        if (isContainer(value)) {
            path.enter(value);
        } else if (!isValidLeaf(value)) {
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
