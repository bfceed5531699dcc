#pragma once

#include <cstdint>
#include <vector>

#include "services/gate/WriteProgress.h"

namespace kestrav {

/// Keeps what it is told.
class RecordingProgress final : public WriteProgress {
  public:
    struct Step {
        WritePhase phase;
        std::uint64_t bytes;              ///< to be gone through
        std::vector<std::uint64_t> done;  ///< each number that was told
    };
    std::vector<Step> steps;

    void enter(WritePhase phase, std::uint64_t bytes) override { steps.push_back({phase, bytes, {}}); }
    void advance(std::uint64_t bytes) override { steps.back().done.push_back(bytes); }
};

}  // namespace kestrav
