#include "cli/fleetWords.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace kestrav {
namespace {

using Named = std::pair<WritePhase, std::string_view>;

constexpr std::array kPhases{Named{WritePhase::unmounting, "unmounting"},
                             Named{WritePhase::reading, "reading the image"}, Named{WritePhase::writing, "writing"},
                             Named{WritePhase::flushing, "waiting for the memory"},
                             Named{WritePhase::checking, "checking"}};

}  // namespace

std::string fleetWords(std::size_t ended, const std::vector<WriteState>& states) {
    const auto in = [&](WritePhase phase) { return std::ranges::count(states, phase, &WriteState::phase); };
    // Somebody may be typing a password in this line.
    if (in(WritePhase::asking) > 0) return {};
    std::string words;
    for (const auto& [phase, name] : kPhases)
        if (const auto count = in(phase); count > 0) words += ", " + std::string(name) + ": " + std::to_string(count);
    if (words.empty()) return {};
    return "Ended: " + std::to_string(ended) + words + ". Don't unplug them.";
}

}  // namespace kestrav
