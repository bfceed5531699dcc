#include "cli/FleetProgress.h"

#include <ostream>

#include "cli/fleetWords.h"
#include "cli/interruptedResult.h"
#include "cli/progressObject.h"

namespace kestrav {

FleetProgress::FleetProgress(const SendOptions& options, const Console& console)
    : asObjects_(options.progress),
      console_(console) {
    if (console.terminal && !options.quiet && !options.progress) line_.emplace(*console.terminal);
}

WriteWatch::Show FleetProgress::showOf(const UsbDevice& device) {
    if (!asObjects_ && !line_) return {};
    return [this, port = device.port](const WriteState& state) { see(port, state); };
}

void FleetProgress::see(const std::string& port, const WriteState& state) {
    const std::lock_guard lock(showing_);
    if (asObjects_) {
        console_.out << progressObject(state) << std::endl;
        return;
    }
    seen_[port] = state;
    std::vector<WriteState> states;
    for (const auto& [place, one] : seen_)
        states.push_back(one);
    const std::string words = fleetWords(ended_, states);
    words.empty() ? line_->clear() : line_->show(words);
}

FleetProgress::Watched::Watched(FleetProgress& progress, const UsbDevice& device, WriteWatch& watch)
    : progress_(progress),
      port_(device.port) {
    const std::lock_guard lock(progress.registering_);
    progress.writings_.insert_or_assign(port_, Writing{device, &watch});
}

FleetProgress::Watched::~Watched() {
    {
        const std::lock_guard lock(progress_.registering_);
        progress_.writings_.erase(port_);
    }
    const std::lock_guard lock(progress_.showing_);
    progress_.seen_.erase(port_);
    ++progress_.ended_;
}

void FleetProgress::aside(const std::function<void()>& say) {
    const std::lock_guard lock(showing_);
    if (line_) line_->clear();
    say();
}

std::vector<UpdateResult> FleetProgress::interrupted() {
    const std::lock_guard lock(registering_);
    std::vector<UpdateResult> ends;
    for (auto& [port, writing] : writings_) {
        const auto state = writing.watch->state();
        if (!state) continue;
        UpdateResult end = interruptedResult(*state);
        end.serial = writing.device.serial;
        end.port = port;
        ends.push_back(end);
    }
    return ends;
}

}  // namespace kestrav
