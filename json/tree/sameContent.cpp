#include "json/tree/sameContent.h"

#include <vector>

#include "json/tree/TreeNodes.h"

namespace kestrav {
namespace {

struct Pair {
    const Tree* left;
    const Tree* right;
};

/// Compares two trees but for what lies in lists and maps: those pairs are added to `open`.
bool sameAtTop(const Tree& left, const Tree& right, std::vector<Pair>& open) {
    if (left.kind() != right.kind()) return false;
    switch (left.kind()) {
        case Tree::Kind::null:
            return true;
        case Tree::Kind::boolean:
            return left.boolean() == right.boolean();
        case Tree::Kind::number:
            return *left.number() == *right.number();
        case Tree::Kind::text:
            return left.text() == right.text();
        case Tree::Kind::object:
            return left.object() == right.object();
        case Tree::Kind::list:
            if (left.size() != right.size()) return false;
            for (std::size_t at = 0; at < left.size(); ++at)
                open.push_back({&left.element(at), &right.element(at)});
            return true;
        case Tree::Kind::map:
            if (left.size() != right.size()) return false;
            for (std::size_t at = 0; at < left.size(); ++at) {
                const Tree* other = right.member(left.keyAt(at));
                if (other == nullptr) return false;
                open.push_back({&left.valueAt(at), other});
            }
            return true;
    }
    return false;
}

}  // namespace

bool sameContent(const Tree& left, const Tree& right) {
    std::vector<Pair> open{{&left, &right}};
    while (!open.empty()) {
        const Pair pair = open.back();
        open.pop_back();
        // Trees that share their node, or hold the same words, are equal without a look inside.
        const TreeWords a = TreeNodes::words(*pair.left);
        const TreeWords b = TreeNodes::words(*pair.right);
        if (a.payload == b.payload && a.meta == b.meta) continue;
        if (!sameAtTop(*pair.left, *pair.right, open)) return false;
    }
    return true;
}

}  // namespace kestrav
