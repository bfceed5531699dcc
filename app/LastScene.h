#pragma once

#include <optional>
#include <span>
#include <string>

namespace kestrav {

/// What the program was doing when it stopped.
struct LastScene {
    bool isUpdating = false;
    bool mayBeWritten = false;  ///< since the newest update began, a write has been asked for
    std::string path;           ///< the image of the newest update; empty before the first

    /// Replaces this process by a new one of the same program, to whose main function it is handed over. Returns if
    /// that can't be done. Allocates nothing.
    void handOver() const;

    /// What was handed over with the arguments that a main function got; nothing as a rule.
    static std::optional<LastScene> handedOver(std::span<char* const> arguments);
};

}  // namespace kestrav
