#include "services/asker/processHolding.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

#include "services/asker/ProcessRecord.h"

namespace kestrav {
namespace {

// A program that is about to receive a descriptor has done so by then.
constexpr std::chrono::milliseconds kTimeToReceive{500};
constexpr std::chrono::milliseconds kGlance{10};

std::vector<pid_t> holders(std::uint32_t inode, std::span<const pid_t> ours) {
    std::vector<pid_t> found;
    for (const pid_t pid : ProcessRecord::all()) {
        if (std::ranges::find(ours, pid) == ours.end() && ProcessRecord(pid).holds(inode)) found.push_back(pid);
    }
    return found;
}

bool keepsDescriptorsUnderWay(const ProcessRecord& process) {
    const auto end = std::chrono::steady_clock::now() + kTimeToReceive;
    while (process.hasDescriptorsUnderWay()) {
        if (std::chrono::steady_clock::now() >= end) return true;
        std::this_thread::sleep_for(kGlance);
    }
    return false;
}

}  // namespace

Outcome<AskingProcess> processHolding(const PeerIdentity& peer, std::span<const pid_t> ours) {
    const auto found = holders(peer.inode, ours);
    if (found.empty()) return refused("no process can be found behind the connection.");
    if (found.size() > 1) return refused("several processes share the connection, so nobody can tell who asks.");
    const ProcessRecord process(found.front());
    const auto before = process.startTime();
    if (!process.runsAs(peer.uid))
        return refused("the process behind the connection runs with other rights than its user's.");
    if (keepsDescriptorsUnderWay(process))
        return refused("the process behind the connection has descriptors under way, so nobody can tell who asks.");
    // Held by the same process before and after, so what was read in between is about that process.
    if (!before || !process.holds(peer.inode) || process.startTime() != before)
        return refused("the process behind the connection is gone.");
    return AskingProcess{found.front(), *before, peer.uid};
}

}  // namespace kestrav
