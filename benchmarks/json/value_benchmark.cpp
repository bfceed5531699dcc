// What people do with a value once it is there, against Boost.JSON and std::vector, in one process, by turns:
//     value_benchmark [ROUNDS]
// Each line has a limit, and says whether it holds.

#include <algorithm>
#include <boost/json.hpp>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <time.h>
#include <vector>

#include "json/value/JSON.h"

namespace kestrav::benchmark {
namespace {

std::size_t seen = 0;  // what was found is added up here, so that nothing can be left out

double worked() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double secondsOf(const std::function<void()>& work) {
    const double start = worked();
    work();
    return worked() - start;
}

/// Our work, the other's, how often each is done in it, and how many times as long as the other's ours may take.
struct Line {
    const char* name;
    std::function<void()> own;
    std::function<void()> other;
    double times;
    double limit;
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

bool print(const Line& line, int rounds) {
    std::vector<double> own;
    std::vector<double> ratio;
    for (int round = 0; round < rounds; ++round) {
        own.push_back(secondsOf(line.own));
        ratio.push_back(own.back() / secondsOf(line.other));
    }
    const bool holds = median(ratio) <= line.limit;
    std::printf("| %s | %.1f ns | %.3f | %.3f | %s |\n", line.name, 1e9 * median(own) / line.times, median(ratio),
                line.limit, holds ? "yes" : "NO");
    return holds;
}

std::string listOf(std::size_t count) {
    std::string text = "[";
    for (std::size_t at = 0; at < count; ++at)
        text += (at > 0 ? ",{\"id\":" : "{\"id\":") + std::to_string(at) + ",\"name\":\"some name of an element\"}";
    return text + "]";
}

Line lookup(const char* name, const std::string& text) {
    constexpr int kTimes = 100'000;
    const JSON own = JSON::parse(text);
    const auto other = boost::json::parse(text);
    return {name,
            [own] {
                for (int at = 0; at < kTimes; ++at) {
                    const JSON found = own["user"]["name"];
                    seen += found.text()->size();
                }
            },
            [other] {
                for (int at = 0; at < kTimes; ++at)
                    seen += other.at("user").at("name").as_string().size();
            },
            2.0 * kTimes, 1.3};
}

Line walk(const char* name, const std::string& text, int times, std::size_t parts) {
    const JSON own = JSON::parse(text);
    const auto other = boost::json::parse(text);
    return {name,
            [own, times] {
                for (int at = 0; at < times; ++at)
                    for (const auto& [key, member] : own)
                        seen += member.type() == JSON::Type::number ? 1 : 0;
            },
            [other, times] {
                for (int at = 0; at < times; ++at) {
                    if (const auto* list = other.if_array()) {
                        for (const auto& member : *list)
                            seen += member.is_number() ? 1 : 0;
                    } else {
                        for (const auto& member : other.as_object())
                            seen += member.value().is_number() ? 1 : 0;
                    }
                }
            },
            static_cast<double>(times) * static_cast<double>(parts), 5};
}

Line copyAndChange() {
    const std::string text = listOf(10'000);
    const JSON own = JSON::parse(text);
    const auto other = boost::json::parse(text);
    return {"copy and change one of 10,000",
            [own] {
                JSON copy = own;
                copy.assign({5000, "name"}, "changed");
                seen += copy.type() == JSON::Type::array ? 1 : 0;
            },
            [other] {
                auto copy = other;
                copy.as_array()[5000].as_object()["name"] = "changed";
                seen += copy.as_array().size();
            },
            1, 0.05};
}

Line append(int count) {
    return {count == 20'000 ? "append 20,000, against std::vector" : "append 5,000, against std::vector",
            [count] {
                JSON list = JSON::parse("[]");
                for (int at = 0; at < count; ++at)
                    seen += list.append(at) ? 1 : 0;
            },
            [count] {
                std::vector<JSON> list;
                for (int at = 0; at < count; ++at)
                    list.emplace_back(at);
                seen += list.size();
            },
            static_cast<double>(count), 3};
}

int run(int rounds) {
    const std::string small = R"({"id": 1, "user": {"id": 2, "name": "a name"}, "text": "something"})";
    const std::string large = R"({"id": 1, "user": {"id": 2, "name": "a name", "all": )" + listOf(10'000) + "}}";
    const std::string six = R"({"a": 1, "b": "two", "c": 3.5, "d": null, "e": [5], "f": {"g": 6}})";
    std::printf("Medians over %d rounds, of time worked and of its ratio to the other's in the same round.\n\n",
                rounds);
    std::printf("| work | each | times the other's | at most | holds |\n|---|--:|--:|--:|---|\n");
    bool all = print(lookup("a step of a lookup", small), rounds);
    all = print(lookup("the same above 10,000 objects", large), rounds) && all;
    all = print(walk("walk an object of six, a member", six, 50'000, 6), rounds) && all;
    all = print(walk("walk a list of 10,000, an element", listOf(10'000), 50, 10'000), rounds) && all;
    all = print(copyAndChange(), rounds) && all;
    all = print(append(5000), rounds) && all;
    all = print(append(20'000), rounds) && all;
    std::printf("\nEvery limit holds: %s (%zu)\n", all ? "yes" : "NO", seen);
    return 0;
}

}  // namespace
}  // namespace kestrav::benchmark

int main(int count, char** arguments) {
    return kestrav::benchmark::run(count > 1 ? std::atoi(arguments[1]) : 31);
}
