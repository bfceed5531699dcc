#pragma once

#include <string>
#include <vector>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {

/// A generated document and paths into it that end at texts. The same on every run and machine.
struct Document {
    std::string name;
    std::string text;
    std::vector<Path> paths;
};

/// `scale` is the size of the texts in about a tenth of a megabyte.
Document shortStringsAndObjects(int scale);
Document numbers(int scale);
Document deepCatalogue(int scale);

}  // namespace kestrav::benchmark
