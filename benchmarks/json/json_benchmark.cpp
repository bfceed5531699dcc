// Compares this project's JSON with other libraries on generated documents, in one run, and prints a table of ratios:
//     json_benchmark [ROUNDS [SCALE [DOUBLES]]]
// Ends with 1 when a random double doesn't survive being written and read.

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>

#include "benchmarks/json/measure.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"

namespace kestrav::benchmark {
namespace {

/// A library to compare with. Ours has to be at least so many times as fast as it on each document; 0: no limit.
struct Rival {
    PeerMaker maker;
    double parse = 0;
    double serialise = 0;
};

/// What is asked beyond that of the comparison with the first of the rivals.
constexpr double kClearlyFaster = 1.3;
constexpr int kClearlyFasterDocuments = 5;
constexpr std::string_view kClearlyFasterWritten = "doubles";

struct Row {
    const Document* document;
    std::vector<Comparison> all;
};

const char* verdict(bool holds) {
    return holds ? "yes" : "NO";
}

void printHead(const std::vector<Rival>& rivals, const char* work) {
    std::printf("\n| %s | MB/s |", work);
    for (std::size_t at = 1; at < rivals.size(); ++at)
        std::printf(" x %s |", rivals[at].maker()->name().data());
    std::printf(" holds |\n|---|--:|");
    for (std::size_t at = 1; at < rivals.size(); ++at)
        std::printf("--:|");
    std::printf("---|\n");
}

/// One table; returns whether every limit holds.
bool printTable(const std::vector<Rival>& rivals, const std::vector<Row>& rows, const char* work,
                double Figures::*figure, double Rival::*limit) {
    printHead(rivals, work);
    bool all = true;
    int clearly = 0;
    for (const auto& [document, figures] : rows) {
        const double size = static_cast<double>(document->text.size());
        std::printf("| %s | %.0f |", document->name.c_str(), size / (figures[0].own.*figure) / 1e6);
        bool holds = true;
        for (std::size_t at = 1; at < rivals.size(); ++at) {
            const double times = figures[at].ofFirst.*figure;
            std::printf(" %.2f |", times);
            holds = holds && times >= rivals[at].*limit;
        }
        const bool isClearly = figures[1].ofFirst.*figure >= kClearlyFaster;
        clearly += isClearly ? 1 : 0;
        if (limit == &Rival::serialise && document->name == kClearlyFasterWritten) holds = holds && isClearly;
        std::printf(" %s |\n", verdict(holds));
        all = all && holds;
    }
    const bool enough = limit != &Rival::parse || clearly >= kClearlyFasterDocuments;
    std::printf("%d of %zu at least %.1f times as fast as %s: %s\n", clearly, rows.size(), kClearlyFaster,
                rivals[1].maker()->name().data(), verdict(enough));
    return all && enough;
}

void printMemory(const std::vector<Rival>& rivals, const std::vector<Row>& rows) {
    std::printf("\n| peak memory of parsing | KiB | times the text |");
    for (std::size_t at = 1; at < rivals.size(); ++at)
        std::printf(" part of %s |", rivals[at].maker()->name().data());
    std::printf("\n");
    for (const auto& [document, figures] : rows) {
        const double own = figures[0].own.memory;
        std::printf("| %s | %.0f | %.2f |", document->name.c_str(), own / 1024,
                    own / static_cast<double>(document->text.size()));
        for (std::size_t at = 1; at < figures.size(); ++at)
            std::printf(" %.2f |", own / figures[at].own.memory);
        std::printf("\n");
    }
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

int run(int rounds, int scale, std::size_t doubleCount) {
    const std::vector<Rival> rivals{{makeKestravPeer},  {makeBoostPeer, 1.0, 1.0}, {makeMonotonicBoostPeer, 0.7, 0},
                                    {makeNlohmannPeer}, {makeRapidJSONPeer},       {makeQtPeer},
                                    {makeSimdjsonPeer}};
    std::vector<PeerMaker> peers;
    for (const Rival& rival : rivals)
        peers.push_back(rival.maker);
    const std::vector<Document> documents{
        shortStringsAndObjects(scale), numbers(scale),     doubles(scale),    ints(scale),
        deepCatalogue(scale),          twitterLike(scale), canadaLike(scale), citmLike(scale)};
    std::printf(
        "How many times as fast as each library. Medians over %d rounds of the ratio within a round, in which every\n"
        "library has the shortest of five times of work in a process of its own.\n",
        rounds);
    std::vector<Row> rows;
    for (const Document& document : documents)
        rows.push_back({&document, measure(peers, document, rounds)});
    const bool parses = printTable(rivals, rows, "parse", &Figures::parse, &Rival::parse);
    const bool writes = printTable(rivals, rows, "write", &Figures::serialise, &Rival::serialise);
    printMemory(rivals, rows);
    const std::size_t changed = changedDoubles(doubleCount);
    std::printf("\nOf %zu random doubles, %zu were changed by writing and reading them.\n", doubleCount, changed);
    std::printf("Every limit holds: %s\n", verdict(parses && writes));
    return changed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace kestrav::benchmark

int main(int count, char** arguments) {
    const auto argument = [&](int at, long fallback) {
        return count > at ? std::strtol(arguments[at], nullptr, 10) : fallback;
    };
    return kestrav::benchmark::run(static_cast<int>(argument(1, 9)), static_cast<int>(argument(2, 20)),
                                   static_cast<std::size_t>(argument(3, 10'000'000)));
}
