// Reads a document, looks things up, changes it in place, and writes it; then a record as JSON.

#include <iostream>
#include <kestrav/json.h>
#include <string>
#include <tuple>
#include <vector>

namespace {

using kestrav::JSON;

/// A record: the table of its fields is all that it takes to be written.
struct Lamp {
    std::string name;
    std::vector<std::string> colours;

    static constexpr auto JSONFields() {
        using kestrav::JSONField;
        return std::tuple(JSONField{"name", &Lamp::name}, JSONField{"colours", &Lamp::colours});
    }
};

}  // namespace

int main() {
    kestrav::JSONError error;
    JSON house = JSON::parse(R"({"rooms": [{"name": "hall", "lamps": 2}, {"name": "loft", "lamps": 0}]})", &error);
    if (error.code != 0) {
        std::cerr << "line " << error.place->line << ": " << error.localizedDescription() << '\n';
        return 1;
    }

    // A lookup never fails: what isn't there is null, and says why.
    std::cout << house["rooms"][0]["name"].stringValue() << ": " << house["rooms"][0]["lamps"].valueAs<int>() << '\n';
    const JSON missing = house["rooms"][7]["name"];
    std::cout << (missing.exists() ? "there" : missing.error()->localizedDescription()) << '\n';

    // A lookup gives a copy; at() leads to the place itself.
    if (!house.at({"rooms", 1, "lamps"}).set(3) || !house.at({"rooms"}).append(JSON::parse(R"({"name":"yard"})")))
        return 1;
    for (const auto& [key, room] : house["rooms"])
        std::cout << key.string() << ' ' << room.rawString(kestrav::json::TextEncoding::utf8).value_or("") << '\n';

    const JSON lamp(kestrav::JSONRepresentation(Lamp{"desk", {"red", "blue"}}));
    std::cout << lamp.rawString(kestrav::json::TextEncoding::utf8).value_or("") << '\n';
    return 0;
}
