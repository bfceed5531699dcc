#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "json/tree/Tree.h"
#include "json/value/JSON.h"
#include "json/value/JSONKey.h"

namespace kestrav {

/// A place within a JSON value, for changing what stands there without taking the value apart:
///
///     JSON json = JSON::parse(R"({"lamps":[{"on":false}]})");
///     bool changed = json.at({"lamps", 0, "on"}).set(true);
///     changed = changed && json.at({"lamps"}).append(JSON::parse(R"({"on":false})"));
///     changed = changed && json.at({"lamps", 1}).remove();
///
/// It remembers the path and follows it anew for each change, so it never changes a copy that was made meanwhile; the
/// value that it was taken from must outlive it. The empty path is the value itself. Nothing is copied but the lists
/// and maps on the way that other values share, and appending one by one takes time linear in their number.
///
/// A change that can't be made (nothing of that name on the way, a list expected and something else found, an index
/// beyond the list) gives false, and everything is as it was; so it is when std::bad_alloc is raised.
class JSONEditor {
  public:
    /// A place in `value`, which isn't owned.
    JSONEditor(JSON& value, std::span<const JSONKey> path) : value_(value), path_(path.begin(), path.end()) {}
    JSONEditor(const JSONEditor&) = delete;
    JSONEditor& operator=(const JSONEditor&) = delete;

    /// What stands there; null with an error when there is nothing, as of a lookup.
    JSON value() const { return value_[path_]; }

    /// Replaces what stands there, or adds the member that the path ends with to a dictionary that lacks it.
    [[nodiscard]] bool set(JSON value);
    /// Adds an element at the end of the list that stands there.
    [[nodiscard]] bool append(JSON value);
    /// Adds an element to the list that stands there, in front of the one with that index or, at the size of the list,
    /// at its end.
    [[nodiscard]] bool insert(std::size_t index, JSON value);
    /// Takes the element or member away from the list or dictionary that stands there; what follows moves up.
    [[nodiscard]] bool remove(const JSONKey& key);
    /// Takes what stands there away from the list or dictionary that holds it. The value as a whole can't be.
    [[nodiscard]] bool remove();

  private:
    /// What the path leads to, not shared with any other value; a null pointer when it leads nowhere.
    Tree* place(std::span<const JSONKey> path);

    JSON& value_;
    std::vector<JSONKey> path_;
};

}  // namespace kestrav
