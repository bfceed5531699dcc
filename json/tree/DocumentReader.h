#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json/tree/NodeArena.h"
#include "json/tree/ReadFailure.h"
#include "json/tree/TreeNodes.h"
#include "json/tree/readJSON.h"

namespace kestrav {

/// Reads one document in one pass: finished values wait on a stack until the end of their list or map. Calls itself for
/// what lies within, to the depth that readJSON() allows and no deeper.
class DocumentReader {
  public:
    explicit DocumentReader(std::string_view document)
        : begin_(document.data()),
          end_(begin_ + document.size()),
          arena_(document.size()) {
        values_.reserve(std::min(document.size() / kBytesForAValue, kMostReserved));
    }
    DocumentReader(const DocumentReader&) = delete;
    DocumentReader& operator=(const DocumentReader&) = delete;
    ~DocumentReader();

    /// Nothing when the document can't be read; then failure() says why.
    std::optional<Tree> read();
    ReadError failure() const;

  private:
    /// Room for the values is made at once: growing would copy them, and memory that stays untouched costs nothing.
    static constexpr std::size_t kBytesForAValue = 4;
    static constexpr std::size_t kMostReserved = std::size_t{1} << 22U;

    // Each reads what begins at `at`, which is not the end, and returns where it ends; a null pointer after a failure.
    const char* readValue(const char* at);
    const char* readList(const char* at);
    const char* readMap(const char* at);
    const char* readMember(const char* at);
    const char* readWord(const char* at, std::string_view word, TreeWords words);

    /// Where the next byte stands that is no white space; a null pointer, and a failure, at the end of the document.
    const char* next(const char* at);
    /// Room for one more value, so that one that has been made is never lost.
    TreeWords& room() { return values_.emplace_back(); }
    std::span<const TreeWords> from(std::size_t first) const { return std::span(values_).subspan(first); }
    void replaceFrom(std::size_t first, TreeWords container) {
        values_.resize(first);
        values_.push_back(container);
    }

    const char* begin_;
    const char* end_;
    std::size_t depth_ = 0;
    ReadFailure failure_;
    std::vector<TreeWords> values_;
    std::string scratch_;
    NodeArena arena_;
};

}  // namespace kestrav
