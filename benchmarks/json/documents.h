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
Document doubles(int scale);
Document ints(int scale);
Document deepCatalogue(int scale);

/// Of the same shape as documents that parsers are often measured with, in shapes.cpp: messages with many members and
/// much text beyond ASCII; a polygon of pairs of doubles with 17 digits; events and prices, with white space.
Document twitterLike(int scale);
Document canadaLike(int scale);
Document citmLike(int scale);

}  // namespace kestrav::benchmark
