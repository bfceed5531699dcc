#include "cli/progressWords.h"

#include "base/stopProcess.h"

namespace kestrav {
namespace {

constexpr const char* kStayPlugged = ". Don't unplug the accessory.";

std::string share(const WriteState& state) {
    if (state.of == 0) return "";
    // In this order nothing overflows, whatever a board says.
    const auto percent = static_cast<int>(100.0 * static_cast<double>(state.done) / static_cast<double>(state.of));
    return ": " + std::to_string(percent) + " %";
}

std::string speed(const WriteState& state) {
    if (state.bytesASecond == 0) return "";
    const std::uint64_t tenths = state.bytesASecond / 100000;
    return ", " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " MB/s";
}

}  // namespace

std::string progressWords(const WriteState& state) {
    switch (state.phase) {
        case WritePhase::asking:
            // Somebody may be typing a password in this line.
        case WritePhase::done:
            return "";
        case WritePhase::unmounting:
            return "Unmounting" + std::string(kStayPlugged);
        case WritePhase::reading:
            return "Reading the image" + share(state) + speed(state) + kStayPlugged;
        case WritePhase::writing:
            return "Writing" + share(state) + speed(state) + kStayPlugged;
        case WritePhase::flushing:
            return "Waiting until the accessory has kept it" + std::string(kStayPlugged);
        case WritePhase::checking:
            return "Checking" + share(state) + speed(state) + kStayPlugged;
    }
    stopProcess();
}

}  // namespace kestrav
