#include "json/tree/DocumentReader.h"

#include "json/tree/TreeMapNode.h"
#include "json/tree/readNumber.h"
#include "json/tree/readText.h"
#include "json/tree/scanText.h"

namespace kestrav {

DocumentReader::~DocumentReader() {
    for (const TreeWords& words : values_)
        static_cast<void>(TreeNodes::adopt(words));
}

std::optional<Tree> DocumentReader::read() {
    const char* at = next(begin_);
    if (at != nullptr) at = readValue(at);
    if (at == nullptr) return std::nullopt;
    at = scanSpace(at, end_);
    if (at != end_) {
        failure_.note("more after the end of the document", at);
        return std::nullopt;
    }
    const TreeWords words = values_.back();
    values_.pop_back();
    return TreeNodes::adopt(words);
}

ReadError DocumentReader::failure() const {
    return {std::string(failure_.what), static_cast<std::size_t>(failure_.at - begin_)};
}

inline const char* DocumentReader::next(const char* at) {
    // Most often there is none to skip.
    if (at != end_ && static_cast<unsigned char>(*at) > ' ') return at;
    at = scanSpace(at, end_);
    return at == end_ ? failure_.incomplete(end_) : at;
}

const char* DocumentReader::readValue(const char* at) {
    switch (*at) {
        case '"':
            return readText(at + 1, end_, room(), arena_, scratch_, failure_);
        case '[':
            return readList(at);
        case '{':
            return readMap(at);
        case 't':
            return readWord(at, "true", TreeNodes::give(Tree(true)));
        case 'f':
            return readWord(at, "false", TreeNodes::give(Tree(false)));
        case 'n':
            return readWord(at, "null", TreeWords());
        case '-':
        case '0':
        case '1':
        case '2':
        case '3':
        case '4':
        case '5':
        case '6':
        case '7':
        case '8':
        case '9':
            return readNumber(at, end_, room(), failure_);
        default:
            return failure_.syntax(at);
    }
}

const char* DocumentReader::readList(const char* at) {
    if (depth_ == kMaxReadingDepth) return failure_.note("too deep", at);
    ++depth_;
    const std::size_t first = values_.size();
    at = next(at + 1);
    if (at == nullptr) return nullptr;
    bool isOpen = *at != ']';
    while (isOpen) {
        at = readValue(at);
        if (at != nullptr) at = next(at);
        if (at == nullptr) return nullptr;
        if (*at != ',' && *at != ']') return failure_.syntax(at);
        isOpen = *at == ',';
        if (isOpen) at = next(at + 1);
        if (at == nullptr) return nullptr;
    }
    if (values_.size() - first > TreeListNode::kMaxElements) return failure_.note("array too large", at);
    room();
    values_.pop_back();
    replaceFrom(first, TreeNodes::list(from(first), &arena_));
    --depth_;
    return at + 1;
}

const char* DocumentReader::readMap(const char* at) {
    if (depth_ == kMaxReadingDepth) return failure_.note("too deep", at);
    ++depth_;
    const std::size_t first = values_.size();
    at = next(at + 1);
    if (at == nullptr) return nullptr;
    bool isOpen = *at != '}';
    while (isOpen) {
        at = readMember(at);
        if (at == nullptr) return nullptr;
        if (*at != ',' && *at != '}') return failure_.syntax(at);
        isOpen = *at == ',';
        if (isOpen) at = next(at + 1);
        if (at == nullptr) return nullptr;
    }
    if ((values_.size() - first) / 2 > TreeMapNode::kMaxMembers) return failure_.note("object too large", at);
    room();
    values_.pop_back();
    replaceFrom(first, TreeNodes::map(from(first), &arena_));
    --depth_;
    return at + 1;
}

/// A key and its value; returns what stands behind them and is no white space.
const char* DocumentReader::readMember(const char* at) {
    if (*at != '"') return failure_.syntax(at);
    at = readText(at + 1, end_, room(), arena_, scratch_, failure_);
    if (at != nullptr) at = next(at);
    if (at == nullptr) return nullptr;
    if (*at != ':') return failure_.syntax(at);
    at = next(at + 1);
    if (at != nullptr) at = readValue(at);
    return at == nullptr ? nullptr : next(at);
}

const char* DocumentReader::readWord(const char* at, std::string_view word, TreeWords words) {
    const auto left = static_cast<std::size_t>(end_ - at);
    if (left >= word.size()) {
        if (std::memcmp(at, word.data(), word.size()) != 0) return failure_.syntax(at);
        room() = words;
        return at + word.size();
    }
    // Too near the end to be that word: what is wrong is the first other byte, or that there are no more.
    for (std::size_t byte = 1; byte < left; ++byte)
        if (at[byte] != word[byte]) return failure_.syntax(at + byte);
    return failure_.incomplete(end_);
}

}  // namespace kestrav
