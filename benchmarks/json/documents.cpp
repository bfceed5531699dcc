#include "benchmarks/json/documents.h"

#include "benchmarks/json/Chance.h"

namespace kestrav::benchmark {
namespace {

constexpr std::size_t kPaths = 1000;

const char* const kWords[] = {"amber", "birch", "cedar", "delta",  "ember", "fjord", "grove",   "heath",
                              "inlet", "jetty", "knoll", "lagoon", "marsh", "north", "orchard", "pier"};

std::string word(Chance& chance) {
    return kWords[chance.below(std::size(kWords))];
}

std::string sentence(Chance& chance, std::size_t words) {
    std::string text = word(chance);
    for (std::size_t at = 1; at < words; ++at) {
        text += ' ' + word(chance);
        if (at % 23 == 0) text += " caf\xC3\xA9";
        if (at % 31 == 0) text += "\\n\\\"quoted\\\"";
    }
    return text;
}

}  // namespace

Document shortStringsAndObjects(int scale) {
    Chance chance;
    Document document{"short", "[", {}};
    const std::size_t records = static_cast<std::size_t>(scale) * 400;
    for (std::size_t at = 0; at < records; ++at) {
        if (at > 0) document.text += ',';
        document.text += "{\"id\":" + std::to_string(at) + ",\"name\":" + quoted(word(chance) + ' ' + word(chance)) +
                         ",\"kind\":" + quoted(word(chance)) + ",\"active\":" + (at % 3 ? "true" : "false") +
                         ",\"level\":" + std::to_string(chance.below(100)) + ",\"tags\":[" + quoted(word(chance)) +
                         ',' + quoted(word(chance)) + ',' + quoted(word(chance)) +
                         "],\"home\":{\"city\":" + quoted(word(chance)) +
                         ",\"street\":" + quoted(word(chance) + " road " + std::to_string(chance.below(300))) +
                         ",\"zip\":" + quoted(std::to_string(10000 + at % 89999)) +
                         "},\"note\":null,\"email\":" + quoted(word(chance) + "@example.org") + '}';
    }
    document.text += ']';
    for (std::size_t at = 0; at < kPaths; ++at) {
        const auto record = static_cast<std::int64_t>(chance.below(records));
        document.paths.push_back(at % 2 ? Path{record, "home", "street"} : Path{record, "email"});
    }
    return document;
}

Document numbers(int scale) {
    Chance chance;
    Document document{"numbers", "{\"rows\":[", {}};
    const std::size_t rows = static_cast<std::size_t>(scale) * 360;
    for (std::size_t row = 0; row < rows; ++row) {
        document.text += row > 0 ? ",[" : "[";
        document.text += quoted("row " + std::to_string(row));
        for (int column = 0; column < 16; ++column) {
            document.text += ',';
            switch (column % 4) {
                case 0:
                    document.text += std::to_string(chance.below(100'000));
                    break;
                case 1:
                    document.text += shortest(chance.part() * 360 - 180);
                    break;
                case 2:
                    document.text += shortest(static_cast<double>(chance.below(1'000'000)) / 100);
                    break;
                default:
                    document.text += std::to_string(static_cast<std::int64_t>(chance.word()));
            }
        }
        document.text += ']';
    }
    document.text += "]}";
    for (std::size_t at = 0; at < kPaths; ++at) {
        document.paths.push_back(Path{"rows", static_cast<std::int64_t>(chance.below(rows)), std::int64_t{0}});
    }
    return document;
}

Document doubles(int scale) {
    Chance chance;
    Document document{"doubles", "[\"first\"", {{std::int64_t{0}}}};
    const std::size_t count = static_cast<std::size_t>(scale) * 5400;
    for (std::size_t at = 0; at < count; ++at)
        document.text += ',' + shortest(chance.part() * 2000 - 1000);
    document.text += ']';
    return document;
}

Document ints(int scale) {
    Chance chance;
    Document document{"ints", "[\"first\"", {{std::int64_t{0}}}};
    const std::size_t count = static_cast<std::size_t>(scale) * 10'000;
    for (std::size_t at = 0; at < count; ++at) {
        // From one digit to nineteen, as often negative as not.
        const auto value = static_cast<std::int64_t>(chance.word()) >> chance.below(61);
        document.text += ',' + std::to_string(value);
    }
    document.text += ']';
    return document;
}

Document deepCatalogue(int scale) {
    Chance chance;
    Document document{"catalogue", "{\"catalogue\":{\"sections\":{", {}};
    const std::size_t sections = 8;
    const std::size_t items = static_cast<std::size_t>(scale) * 30;
    for (std::size_t section = 0; section < sections; ++section) {
        document.text += (section > 0 ? ",\"section-" : "\"section-") + std::to_string(section) + "\":{\"items\":{";
        for (std::size_t item = 0; item < items; ++item) {
            const std::string key = "item-" + std::to_string(section) + '-' + std::to_string(item);
            document.text += (item > 0 ? ",\"" : "\"") + key +
                             "\":{\"detail\":{\"shelf\":{\"place\":{\"title\":" + quoted(sentence(chance, 5)) +
                             ",\"row\":" + std::to_string(chance.below(50)) +
                             "}},\"price\":" + shortest(static_cast<double>(chance.below(100'000)) / 100) +
                             ",\"description of the item\":" + quoted(sentence(chance, 30)) + "},\"stock\":[" +
                             std::to_string(chance.below(1000)) + ',' + std::to_string(chance.below(1000)) + "]}";
        }
        document.text += "}}";
    }
    document.text += "}}}";
    for (std::size_t at = 0; at < kPaths; ++at) {
        const std::string section = std::to_string(chance.below(sections));
        document.paths.push_back(Path{"catalogue", "sections", "section-" + section, "items",
                                      "item-" + section + '-' + std::to_string(chance.below(items)), "detail", "shelf",
                                      "place", "title"});
    }
    return document;
}

}  // namespace kestrav::benchmark
