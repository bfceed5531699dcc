#pragma once

#include <boost/json/error.hpp>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "json/TreeNodes.h"

namespace kestrav {

/// Takes the parser's events and builds the tree from them: finished values wait on a stack until the end of their
/// list or map. Texts that the parser hands over in pieces are put together first.
class TreeBuilder {
  public:
    using Error = boost::json::error_code;

    static constexpr std::size_t max_object_size = TreeNodes::kMaxMembers;
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    TreeBuilder() = default;
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;
    ~TreeBuilder() {
        for (const TreeWords& words : values_)
            static_cast<void>(TreeNodes::adopt(words));
    }

    /// The finished document. Only after an error-free end.
    Tree take() {
        const TreeWords words = values_.back();
        values_.pop_back();
        return TreeNodes::adopt(words);
    }

    bool on_document_begin(Error&) { return true; }
    bool on_document_end(Error&) { return true; }
    bool on_object_begin(Error&) { return true; }
    bool on_array_begin(Error&) { return true; }
    bool on_object_end(std::size_t members, Error&) {
        finish(TreeNodes::map(last(2 * members)), 2 * members);
        return true;
    }
    bool on_array_end(std::size_t elements, Error&) {
        finish(TreeNodes::list(last(elements)), elements);
        return true;
    }

    bool on_key_part(boost::json::string_view part, std::size_t, Error&) { return keep(part); }
    bool on_string_part(boost::json::string_view part, std::size_t, Error&) { return keep(part); }
    bool on_key(boost::json::string_view end, std::size_t, Error&) { return addText(end); }
    bool on_string(boost::json::string_view end, std::size_t, Error&) { return addText(end); }

    bool on_number_part(boost::json::string_view, Error&) { return true; }
    bool on_int64(std::int64_t value, boost::json::string_view text, Error&) {
        // An integer has no negative zero.
        if (value == 0 && text[0] == '-') return add(Tree(-0.0));
        return add(Tree(value));
    }
    bool on_uint64(std::uint64_t value, boost::json::string_view, Error&) { return add(Tree(value)); }
    /// The parser's own conversion is not exact, so its result isn't used.
    bool on_double(double, boost::json::string_view text, Error& error) {
        return addNumber({text.data(), text.size()}, error);
    }
    bool on_bool(bool value, Error&) { return add(Tree(value)); }
    bool on_null(Error&) { return add(Tree()); }
    bool on_comment_part(boost::json::string_view, Error&) { return true; }
    bool on_comment(boost::json::string_view, Error&) { return true; }

  private:
    std::span<const TreeWords> last(std::size_t count) const { return std::span(values_).last(count); }
    void finish(TreeWords container, std::size_t parts) {
        values_.resize(values_.size() - parts);
        values_.push_back(container);
    }
    bool add(Tree value) {
        values_.push_back(TreeNodes::give(std::move(value)));
        return true;
    }
    bool keep(boost::json::string_view part) {
        begun_.append(part.data(), part.size());
        return true;
    }
    bool addText(boost::json::string_view end) {
        values_.push_back(TreeNodes::text(begun_, {end.data(), end.size()}));
        begun_.clear();
        return true;
    }
    bool addNumber(std::string_view text, Error& error);

    std::vector<TreeWords> values_;
    std::string begun_;
};

}  // namespace kestrav
