#pragma once

#include <chrono>
#include <thread>

namespace kestrav {

/// Whether the condition comes to hold. Looks again and again, for a minute at most: a busy computer takes its time.
/// Waiting is over as soon as it holds, so the limit costs nothing where all is well.
template <class Condition>
bool eventually(const Condition& holds, std::chrono::milliseconds limit = std::chrono::minutes(1)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace kestrav
