#include "benchmarks/json/measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace kestrav::benchmark {
namespace {

/// What a measuring process reports.
struct Report {
    Figures figures;
    std::size_t written = 0;
    std::size_t found = 0;
};

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// What this process has worked so far, in seconds: on a machine that does other things as well, that is less at their
/// mercy than the time on the wall.
double worked() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The shortest of a few times, which is what the work takes when nothing else disturbs it. `before` isn't counted.
template <class Before, class Work>
double timed(const Before& before, const Work& work) {
    constexpr int kTimes = 5;
    double shortest = 0;
    for (int time = 0; time < kTimes; ++time) {
        before();
        const double start = worked();
        work();
        const double taken = worked() - start;
        if (time == 0 || taken < shortest) shortest = taken;
    }
    return shortest;
}

void check(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "json_benchmark: %.*s\n", static_cast<int>(what.size()), what.data());
    std::exit(1);
}

double residentAtPeak() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::strtod(line.c_str() + 6, nullptr) * 1024;
    }
    return 0;
}

double memoryOfParsing(Peer& peer, const Document& document) {
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew from what is resident now
    const double before = residentAtPeak();
    peer.parse(document.text);
    return residentAtPeak() - before;
}

Report measureHere(Peer& peer, const Document& document) {
    constexpr int kLookUps = 10;
    Report report;
    peer.prepare(document.paths);
    check(peer.parse("{\"\":[]}"), "a library refused a small document");  // whatever it sets up once
    peer.drop();
    report.figures.memory = memoryOfParsing(peer, document);
    peer.drop();
    bool parsed = false;
    report.figures.parse = timed([&] { peer.drop(); }, [&] { parsed = peer.parse(document.text); });
    check(parsed, "a library refused the document");
    report.figures.serialise = timed([] {}, [&] { report.written = peer.serialise(); });
    report.figures.lookUp = timed([&] { report.found = 0; },
                                  [&] {
                                      for (int repeat = 0; repeat < kLookUps; ++repeat)
                                          report.found += peer.lookUp();
                                  });
    return report;
}

Report measureApart(const PeerMaker& peer, const Document& document) {
    int ends[2];
    check(::pipe(ends) == 0, "no pipe");
    const pid_t child = ::fork();
    check(child >= 0, "no process");
    if (child == 0) {
        const Report report = measureHere(*peer(), document);
        _exit(::write(ends[1], &report, sizeof report) == static_cast<ssize_t>(sizeof report) ? 0 : 1);
    }
    ::close(ends[1]);
    Report report;
    const bool told = ::read(ends[0], &report, sizeof report) == static_cast<ssize_t>(sizeof report);
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    check(told, "a measurement did not end");
    check(report.written > document.text.size() / 5, "a library wrote too little");
    return report;
}

/// The median over the rounds of what `figure` makes of a library's report and of the first library's in that round.
template <class Figure>
double medianOf(const std::vector<Report>& reports, const std::vector<Report>& firsts, const Figure& figure) {
    std::vector<double> values;
    values.reserve(reports.size());
    for (std::size_t round = 0; round < reports.size(); ++round)
        values.push_back(figure(reports[round].figures, firsts[round].figures));
    return median(values);
}

Comparison comparison(const std::vector<Report>& reports, const std::vector<Report>& firsts) {
    Comparison result;
    for (const auto figure : {&Figures::parse, &Figures::serialise, &Figures::lookUp, &Figures::memory}) {
        result.own.*figure = medianOf(reports, firsts, [&](const Figures& own, const Figures&) { return own.*figure; });
        result.ofFirst.*figure = medianOf(
            reports, firsts, [&](const Figures& own, const Figures& first) { return own.*figure / (first.*figure); });
    }
    return result;
}

}  // namespace

std::vector<Comparison> measure(const std::vector<PeerMaker>& peers, const Document& document, int rounds) {
    std::vector<std::vector<Report>> reports(peers.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t at = 0; at < peers.size(); ++at) {
            reports[at].push_back(measureApart(peers[at], document));
            const std::size_t found = reports[at].back().found;
            check(found == 0 || found == reports[0].front().found, "the libraries found different texts");
        }
    }
    std::vector<Comparison> comparisons;
    comparisons.reserve(reports.size());
    for (const auto& ofPeer : reports)
        comparisons.push_back(comparison(ofPeer, reports[0]));
    return comparisons;
}

}  // namespace kestrav::benchmark
