// Plays lookups, assignments and changes in place, as the input dictates them, against a JSON value and against a model
// made of standard containers that copies everything. Copies kept on the way must stay what they were.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "base/stopProcess.h"
#include "json/value/JSONEditor.h"

namespace kestrav {
namespace {

using namespace json;

struct Model;
using ModelList = std::vector<Model>;
using ModelMap = std::map<std::string, Model>;

/// Null, a number, a text, a list or a map, without any sharing.
struct Model {
    std::variant<std::monostate, std::int64_t, std::string, ModelList, ModelMap> value;
};

/// The bytes of the input as choices; zeros when they are used up.
class Choices {
  public:
    Choices(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}
    bool areLeft() const { return at_ != end_; }
    unsigned below(unsigned limit) { return at_ == end_ ? 0 : *at_++ % limit; }

  private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

/// Few keys, short and long, so that they meet; as many as make a map large enough for an index.
std::string chooseKey(Choices& choices) {
    const unsigned number = choices.below(40);
    return (number % 2 == 0 ? "k" : "a key that is longer than fifteen bytes ") + std::to_string(number);
}

JSONKey chooseStep(Choices& choices) {
    if (choices.below(3) == 0) return JSONKey::index(static_cast<std::int64_t>(choices.below(6)) - 1);
    return JSONKey::key(chooseKey(choices));
}

std::vector<JSONKey> choosePath(Choices& choices) {
    std::vector<JSONKey> path;
    for (unsigned steps = choices.below(5); steps > 0; --steps)
        path.push_back(chooseStep(choices));
    return path;
}

/// The same value in both forms.
struct Both {
    Tree tree;
    Model model;
};

Both chooseLeaf(Choices& choices) {
    switch (choices.below(3)) {
        case 0:
            return {};
        case 1: {
            const std::int64_t number = choices.below(200);
            return {Tree(number), Model{number}};
        }
        default: {
            const std::string text = chooseKey(choices);
            return {Tree(text), Model{text}};
        }
    }
}

Both chooseValue(Choices& choices) {
    const unsigned kind = choices.below(4);
    if (kind < 2) return chooseLeaf(choices);
    if (kind == 2) {
        Both list{Tree::list(), Model{ModelList()}};
        for (unsigned count = choices.below(5); count > 0; --count) {
            Both leaf = chooseLeaf(choices);
            list.tree.append(leaf.tree);
            std::get<ModelList>(list.model.value).push_back(leaf.model);
        }
        return list;
    }
    Both map{Tree::map(), Model{ModelMap()}};
    for (unsigned count = choices.below(30); count > 0; --count) {
        const std::string key = chooseKey(choices);
        Both leaf = chooseLeaf(choices);
        map.tree.setMember(key, leaf.tree);
        std::get<ModelMap>(map.model.value)[key] = leaf.model;
    }
    return map;
}

const Model* memberOf(const Model& model, const JSONKey& key) {
    if (const auto* list = std::get_if<ModelList>(&model.value)) {
        const auto index = key.index();
        if (!index || *index < 0 || *index >= static_cast<std::int64_t>(list->size())) return nullptr;
        return &(*list)[static_cast<std::size_t>(*index)];
    }
    const auto* map = std::get_if<ModelMap>(&model.value);
    if (map == nullptr || !key.key()) return nullptr;
    const auto found = map->find(std::string(*key.key()));
    return found == map->end() ? nullptr : &found->second;
}

void put(Model& model, const JSONKey& key, const Model& value) {
    if (auto* map = std::get_if<ModelMap>(&model.value); map != nullptr && key.key()) {
        (*map)[std::string(*key.key())] = value;
    } else if (memberOf(model, key) != nullptr && key.index()) {
        std::get<ModelList>(model.value)[static_cast<std::size_t>(*key.index())] = value;
    }
}

/// The rule as it reads: take the member, change it, put it back.
void assign(Model& model, std::span<const JSONKey> path, const Model& value) {
    if (path.empty()) return;
    if (path.size() == 1) return put(model, path[0], value);
    const Model* found = memberOf(model, path[0]);
    Model member = found == nullptr ? Model() : *found;
    assign(member, path.subspan(1), value);
    put(model, path[0], member);
}

/// Where the path leads; a null pointer when it leads nowhere.
Model* placeOf(Model& model, std::span<const JSONKey> path) {
    const Model* place = &model;
    for (const JSONKey& key : path) {
        place = memberOf(*place, key);
        if (place == nullptr) return nullptr;
    }
    return const_cast<Model*>(place);  // `model` is not constant
}

bool set(Model& model, std::span<const JSONKey> path, const Model& value) {
    if (path.empty()) {
        model = value;
        return true;
    }
    Model* container = placeOf(model, path.first(path.size() - 1));
    if (container == nullptr) return false;
    const bool isMap = std::holds_alternative<ModelMap>(container->value);
    const bool fits = path.back().key() ? isMap : memberOf(*container, path.back()) != nullptr;
    if (fits) put(*container, path.back(), Model(value));
    return fits;
}

bool insert(Model& model, std::span<const JSONKey> path, std::size_t index, const Model& value) {
    Model* place = placeOf(model, path);
    auto* list = place == nullptr ? nullptr : std::get_if<ModelList>(&place->value);
    if (list == nullptr || index > list->size()) return false;
    list->insert(list->begin() + static_cast<std::ptrdiff_t>(index), Model(value));
    return true;
}

bool remove(Model& model, std::span<const JSONKey> path) {
    if (path.empty() || placeOf(model, path) == nullptr) return false;
    Model* container = placeOf(model, path.first(path.size() - 1));
    if (auto* map = std::get_if<ModelMap>(&container->value)) {
        map->erase(std::string(*path.back().key()));
    } else {
        auto& list = std::get<ModelList>(container->value);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(*path.back().index()));
    }
    return true;
}

/// One change in place, which must be told to be possible exactly when it is.
void edit(JSON& json, Model& model, const std::vector<JSONKey>& path, Choices& choices) {
    const Both value = chooseValue(choices);
    JSONEditor place = json.at(path);
    const std::size_t index = choices.below(5);
    switch (choices.below(3)) {
        case 0:
            return require(place.set(JSON(value.tree)) == set(model, path, value.model));
        case 1:
            return require(place.insert(index, JSON(value.tree)) == insert(model, path, index, value.model));
        default:
            return require(place.remove() == remove(model, path));
    }
}

bool same(const Tree& tree, const Model& model) {
    if (const auto* number = std::get_if<std::int64_t>(&model.value)) return tree == Tree(*number);
    if (const auto* text = std::get_if<std::string>(&model.value)) return tree.text() == *text;
    if (const auto* list = std::get_if<ModelList>(&model.value)) {
        if (!tree.isList() || tree.size() != list->size()) return false;
        for (std::size_t at = 0; at < list->size(); ++at) {
            if (!same(tree.element(at), (*list)[at])) return false;
        }
        return true;
    }
    const auto* map = std::get_if<ModelMap>(&model.value);
    if (map == nullptr) return tree.isNull();
    if (!tree.isMap() || tree.size() != map->size()) return false;
    for (const auto& [key, value] : *map) {
        const Tree* member = tree.member(key);
        if (member == nullptr || !same(*member, value)) return false;
    }
    return true;
}

/// What the first failing step of the path must be reported as; 0 when none fails.
std::int64_t expectedCode(const Model& model, const std::vector<JSONKey>& path) {
    const Model* place = &model;
    for (const JSONKey& key : path) {
        const Model* next = memberOf(*place, key);
        if (next == nullptr) {
            const bool isList = std::holds_alternative<ModelList>(place->value);
            const bool isMap = std::holds_alternative<ModelMap>(place->value);
            if (key.index()) return isList ? ErrorIndexOutOfBounds : ErrorWrongType;
            return isMap ? ErrorNotExist : ErrorWrongType;
        }
        place = next;
    }
    return 0;
}

void lookUp(const JSON& json, const Model& model, const std::vector<JSONKey>& path) {
    const JSON found = json[path];
    JSON byStep = json;
    const Model* expected = &model;
    for (const JSONKey& key : path) {
        byStep = byStep[key];
        expected = expected == nullptr ? nullptr : memberOf(*expected, key);
    }
    require(found == byStep && found.error() == byStep.error());
    const std::int64_t code = expectedCode(model, path);
    require(found.error().has_value() == (code != 0));
    if (code != 0) require(found.error()->code == code && found.type() == Type::null && !found.exists());
    require(expected == nullptr || same(found.object(), *expected));
}

void play(Choices choices) {
    constexpr std::size_t kCopies = 4;
    Both start = chooseValue(choices);
    JSON json(start.tree);
    Model model = start.model;
    std::vector<std::pair<JSON, Model>> copies(kCopies, {json, model});
    for (int round = 0; round < 60 && choices.areLeft(); ++round) {
        const std::vector<JSONKey> path = choosePath(choices);
        switch (choices.below(5)) {
            case 0:
                lookUp(json, model, path);
                break;
            case 1:
                copies[choices.below(kCopies)] = {json, model};
                break;
            case 2: {
                const Both value = chooseValue(choices);
                json.assign(path, JSON(value.tree));
                assign(model, path, value.model);
                break;
            }
            case 3:
                edit(json, model, path, choices);
                break;
            default: {
                // A copy of the whole, or what it was before, becomes a part of itself. Only shallow paths, as a model
                // would grow without end otherwise.
                if (path.size() > 1 || round > 8) break;
                const auto& [copy, copied] = copies[choices.below(kCopies)];
                json.assign(path, copy);
                assign(model, path, copied);
            }
        }
        require(same(json.object(), model));
    }
    for (const auto& [copy, copied] : copies)
        require(same(copy.object(), copied));
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrav::play({data, size});
    return 0;
}
