#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "benchmarks/json/documents.h"

namespace kestrav::benchmark {

/// What one library took for one document: the shortest of five times, in seconds of work, and in bytes what the
/// process had more at the peak of parsing than before.
struct Figures {
    double parse = 0;
    double serialise = 0;
    double lookUp = 0;
    double memory = 0;
};

/// Medians over the rounds of what a library took, and of how many times as much that was as what the first library
/// took in the same round.
struct Comparison {
    Figures own;
    Figures ofFirst;
};

using PeerMaker = std::function<std::unique_ptr<Peer>()>;

/// Measures all peers in turn in each round, so that what else the machine does meets all of them. Each measurement
/// has a process of its own and is warmed up there, so that none works in the heap that another left behind. Ends the
/// program when a library refuses the document or finds other texts than the first one.
std::vector<Comparison> measure(const std::vector<PeerMaker>& peers, const Document& document, int rounds);

}  // namespace kestrav::benchmark
