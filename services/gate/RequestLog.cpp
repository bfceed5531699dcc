#include "services/gate/RequestLog.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <new>
#include <string>
#include <sys/mman.h>
#include <type_traits>
#include <utility>

#include "base/SystemLog.h"
#include "services/asker/obtainConsent.h"

namespace kestrav {
namespace {

using Ticks = std::chrono::steady_clock::rep;

constexpr Ticks kNoWindow = 0;
// A user of a container may have thousands of numbers; those who come late share the last place.
constexpr std::size_t kUsers = 16;
constexpr std::uint64_t kNobody = 0;
constexpr std::uint64_t kEverybodyElse = UINT64_MAX;

std::uint64_t ownerOf(uid_t uid) {
    return std::uint64_t{uid} + 1;
}

std::string nameOf(std::uint64_t owner) {
    if (owner == kEverybodyElse) return "other users";
    if (owner == ownerOf(RequestLog::kUnknown)) return "unknown users";
    return "user " + std::to_string(owner - 1);
}

}  // namespace

struct RequestLog::Counts {
    struct OfAUser {
        std::atomic<std::uint64_t> owner{kNobody};
        std::atomic<std::uint64_t> refusals{0};
    };
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<Ticks>::is_always_lock_free);

    OfAUser& of(uid_t uid) {
        for (std::size_t i = 0; i + 1 < kUsers; ++i) {
            std::uint64_t owner = kNobody;
            if (places[i].owner.compare_exchange_strong(owner, ownerOf(uid)) || owner == ownerOf(uid)) return places[i];
        }
        places.back().owner = kEverybodyElse;
        return places.back();
    }

    std::atomic<Ticks> windowEnd{kNoWindow};
    std::array<OfAUser, kUsers> places;
};

void RequestLog::Unmap::operator()(Counts* counts) const noexcept {
    static_assert(std::is_trivially_destructible_v<Counts>);
    ::munmap(counts, sizeof(Counts));
}

RequestLog::RequestLog(SystemLog& log, std::chrono::steady_clock::duration window, std::function<Time()> now)
    : log_(log),
      window_(window),
      now_(std::move(now)) {
    void* shared = ::mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::bad_alloc();
    counts_.reset(new (shared) Counts);
}

void RequestLog::write(std::string_view entry) {
    log_.write(entry);
}

void RequestLog::refused(uid_t uid, std::string_view entry) {
    if (!needsConsent(uid)) return log_.write(entry);
    summarise();
    Ticks none = kNoWindow;
    counts_->windowEnd.compare_exchange_strong(none, (now_() + window_).time_since_epoch().count());
    if (counts_->of(uid).refusals.fetch_add(1) < kListed) log_.write(entry);
}

std::optional<RequestLog::Time> RequestLog::nextSummary() const {
    const Ticks end = counts_->windowEnd;
    if (end == kNoWindow) return std::nullopt;
    return Time(Time::duration(end));
}

void RequestLog::summarise() {
    const Ticks end = counts_->windowEnd;
    if (end != kNoWindow && now_().time_since_epoch().count() >= end) closeWindow(end);
}

void RequestLog::finish() {
    const Ticks end = counts_->windowEnd;
    if (end != kNoWindow) closeWindow(end);
}

void RequestLog::closeWindow(Ticks end) {
    // Of several processes one does it.
    if (!counts_->windowEnd.compare_exchange_strong(end, kNoWindow)) return;
    for (auto& place : counts_->places) {
        const std::uint64_t refusals = place.refusals.exchange(0);
        const std::uint64_t owner = place.owner.exchange(kNobody);
        if (refusals <= kListed) continue;
        log_.write(nameOf(owner) + ": " + std::to_string(refusals - kListed) +
                   " more refusals within a minute are not listed");
    }
}

}  // namespace kestrav
