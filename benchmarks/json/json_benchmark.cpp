// Compares this project's JSON with other libraries on generated documents, in one run, and prints a table of ratios:
//     json_benchmark [ROUNDS [SCALE [DOUBLES]]]
// Ends with 1 when a random double doesn't survive being written and read.

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "benchmarks/json/measure.h"
#include "json/Reader.h"
#include "json/Writer.h"

namespace kestrav::benchmark {
namespace {

struct Row {
    const char* operation;
    double Figures::*figure;
    double unit;
    const char* unitName;
};

constexpr Row kRows[] = {{"parse", &Figures::parse, 1e-3, "ms"},
                         {"serialise", &Figures::serialise, 1e-3, "ms"},
                         {"10 000 lookups by path", &Figures::lookUp, 1e-3, "ms"},
                         {"peak memory of parsing", &Figures::memory, 1 << 20, "MiB"}};

void printTable(const Document& document, const std::vector<Figures>& all) {
    for (const Row& row : kRows) {
        const double own = all[0].*row.figure;
        std::printf("| %s | %s | %.2f %s |", document.name.c_str(), row.operation, own / row.unit, row.unitName);
        for (std::size_t at = 1; at < all.size(); ++at) {
            const double other = all[at].*row.figure;
            // Speed for times, so more is better; use for memory, so less is better.
            const bool isMemory = row.figure == &Figures::memory;
            std::printf(" %.2f |", isMemory ? own / other : other / own);
        }
        std::printf("\n");
    }
    std::fflush(stdout);
}

double randomDouble(std::mt19937_64& engine) {
    for (;;) {
        const auto value = std::bit_cast<double>(static_cast<std::uint64_t>(engine()));
        if (std::isfinite(value)) return value;
    }
}

/// How many of `count` random doubles come back changed from being written and read.
std::size_t changedDoubles(std::size_t count) {
    constexpr std::size_t kBatch = 1000;
    std::mt19937_64 engine(4310);
    std::size_t changed = 0;
    for (std::size_t done = 0; done < count; done += kBatch) {
        Tree list = Tree::list();
        for (std::size_t at = 0; at < kBatch; ++at)
            list.append(Tree(randomDouble(engine)));
        const auto result = readJSON(dataWithJSONObject(list));
        const Tree* back = std::get_if<Tree>(&result);
        for (std::size_t at = 0; at < kBatch; ++at) {
            const double before = list.element(at).number()->floating();
            const double after = back == nullptr ? 0 : back->element(at).number()->doubleValue();
            if (std::bit_cast<std::uint64_t>(before) != std::bit_cast<std::uint64_t>(after)) ++changed;
        }
    }
    return changed;
}

int run(int rounds, int scale, std::size_t doubles) {
    const std::vector<PeerMaker> peers{makeKestravPeer, makeBoostPeer, makeNlohmannPeer, makeRapidJSONPeer, makeQtPeer};
    std::printf(
        "Times: how many times as fast as each library (more is better). Memory: how many times as much (less "
        "is better).\nMedians of %d rounds of the shortest of five times, all libraries in turn in each, every "
        "measurement in a process of its "
        "own.\n\n",
        rounds);
    std::printf("| document | operation | Kestrav |");
    for (std::size_t at = 1; at < peers.size(); ++at)
        std::printf(" vs %s |", peers[at]()->name().data());
    std::printf("\n|---|---|--:|--:|--:|--:|--:|\n");
    for (const Document& document : {shortStringsAndObjects(scale), numbers(scale), deepCatalogue(scale)}) {
        printTable(document, measure(peers, document, rounds));
    }
    const std::size_t changed = changedDoubles(doubles);
    std::printf("\nOf %zu random doubles, %zu were changed by writing and reading them.\n", doubles, changed);
    return changed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace kestrav::benchmark

int main(int count, char** arguments) {
    const auto argument = [&](int at, long fallback) {
        return count > at ? std::strtol(arguments[at], nullptr, 10) : fallback;
    };
    return kestrav::benchmark::run(static_cast<int>(argument(1, 15)), static_cast<int>(argument(2, 40)),
                                   static_cast<std::size_t>(argument(3, 10'000'000)));
}
