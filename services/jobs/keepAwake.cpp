#include "services/jobs/keepAwake.h"

#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <utility>

#include "base/openSystemBus.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};
constexpr std::uint64_t kGlance = 100'000;  // microseconds

/// Filled once logind has answered.
using Answer = std::optional<UniqueFd>;

int onAnswer(sd_bus_message* message, void* answer, sd_bus_error*) {
    int inhibitor = -1;
    // The message owns its descriptor.
    const bool isGiven = sd_bus_message_read(message, "h", &inhibitor) > 0;
    *static_cast<Answer*>(answer) = UniqueFd(isGiven ? ::fcntl(inhibitor, F_DUPFD_CLOEXEC, 3) : -1);
    return 1;
}

/// Without the library's own waiting, which is long while the bus itself does not answer.
UniqueFd inhibitor(sd_bus* bus, const char* mode, Clock::time_point end) {
    Answer answer;
    sd_bus_slot* raw = nullptr;
    const int result = sd_bus_call_method_async(bus, &raw, "org.freedesktop.login1", "/org/freedesktop/login1",
                                                "org.freedesktop.login1.Manager", "Inhibit", onAnswer, &answer, "ssss",
                                                "sleep:shutdown", "Kestrav", "An accessory is being written", mode);
    const SdBusSlotPtr question(raw);
    if (result < 0) return {};
    while (!answer && Clock::now() < end) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0) return {};
        if (processed == 0) sd_bus_wait(bus, kGlance);
    }
    return answer ? std::move(*answer) : UniqueFd();
}

}  // namespace

UniqueFd keepAwake() {
    const auto end = Clock::now() + kPatience;
    const auto bus = openSystemBus();
    if (!bus) return {};
    UniqueFd blocking = inhibitor(bus.value().get(), "block", end);
    return blocking ? std::move(blocking) : inhibitor(bus.value().get(), "delay", end);
}

}  // namespace kestrav
