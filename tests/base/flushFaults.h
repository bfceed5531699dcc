#pragma once

#include <string>
#include <vector>

namespace kestrav {

/// What becomes of fsync(2) in a program that is linked with `flush_faults`: the real thing is done unless told.
struct FlushFaults {
    int error = 0;                     ///< what it fails with
    std::vector<std::string> flushed;  ///< "file" or "folder", in order
};

/// Those of this process.
FlushFaults& flushFaults();

}  // namespace kestrav
