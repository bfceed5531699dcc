#include "services/helper/HelperService.h"

#include <algorithm>
#include <memory>
#include <unistd.h>
#include <utility>

#include "base/openSystemBus.h"
#include "base/shownText.h"
#include "base/systemWords.h"
#include "base/utf8.h"
#include "protocol/names.h"
#include "protocol/wire.h"
#include "services/gate/answerFor.h"
#include "services/gate/shownCommandLine.h"

namespace kestrav {
namespace {

// Requests of which the bus has not said yet who asks. More than anybody has who behaves; of one connection few, so
// that it takes many to keep others out.
constexpr std::size_t kMostWaiting = 1024;
constexpr std::size_t kMostWaitingOfOne = 16;
constexpr std::size_t kMostWaitingBytes = std::size_t{8} << 20U;
/// In a flood the bus drops its answers to the helper like everybody's messages: such a caller is told to come again.
constexpr std::uint64_t kBusPatience = 10'000'000;  // microseconds

/// Blocks of a disk aren't text, and the bus carries nothing else.
std::string carriable(const std::string& answer) {
    if (answer.find('\0') == std::string::npos && isValidUTF8(answer)) return answer;
    return hexadecimal(answer);
}

Problem isBusy() {
    return refused("the helper is busy; try again in a moment.");
}

Problem isNobody() {
    return refused("the system does not tell who is asking.");
}

Problem isBeingStopped() {
    return refused("the helper is being stopped; try again in a moment.");
}

}  // namespace

const sd_bus_vtable HelperService::kOperations[] = {
    SD_BUS_VTABLE_START(0),
    // Everybody may ask; who is served is polkit's decision.
    SD_BUS_METHOD_WITH_ARGS("runWithCmd", SD_BUS_ARGS("s", cmd, "as", arguments), SD_BUS_RESULT("s", text),
                            HelperService::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

HelperService::HelperService(Gate& gate, RequestLog& log, std::chrono::milliseconds idleTime)
    : log_(log),
      idleTime_(idleTime),
      jobs_(*this, gate, log, isBusy()) {}

HelperService::~HelperService() = default;

bool HelperService::run() {
    if (const auto opened = open(); !opened) {
        log_.write(opened.problem().sentence);
        return false;
    }
    log_.write("ready");
    beginIdleness();
    const bool ended = jobs_.run();
    sd_bus_flush(bus_.get());
    return ended && isConnected_;
}

Outcome<void> HelperService::open() {
    const auto cannot = [](int error) {
        return failed("The helper can't serve on the system bus: " + systemWords(error) + ".");
    };
    auto bus = openSystemBus();
    if (!bus) return cannot(bus.problem().cause.value());
    bus_ = std::move(bus.value());
    sd_bus* const raw = bus_.get();
    sd_bus_set_method_call_timeout(raw, kBusPatience);
    int result = sd_bus_add_object_vtable(raw, nullptr, kHelperObject, kHelperLabel, kOperations, this);
    if (result >= 0) {
        result = sd_bus_match_signal(raw, nullptr, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                                     "org.freedesktop.DBus.Local", "Disconnected", onDisconnected, this);
    }
    if (result >= 0) {
        // Of every connection that goes. One by one the bus would allow less of them than there may be callers.
        result = sd_bus_add_match(raw, nullptr,
                                  "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                                  "member='NameOwnerChanged',arg2=''",
                                  onNameGone, this);
    }
    if (result >= 0) result = sd_bus_attach_event(raw, jobs_.loop().get(), SD_EVENT_PRIORITY_NORMAL);
    // Only now: what comes with the name finds everything in its place.
    if (result >= 0) result = sd_bus_request_name(raw, kHelperLabel, 0);
    if (result < 0) return cannot(-result);
    // Its number for forked processes, to which the library does not give it.
    busSocket_ = sd_bus_get_fd(raw);
    isConnected_ = true;
    return {};
}

int HelperService::onCall(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& service = *static_cast<HelperService*>(self);
    service.jobs_.loop().call([&] { service.accept(message); });
    return 1;
}

void HelperService::enter(HelperCall& call) {
    calls_.emplace(call.sender(), &call);
}

void HelperService::leave(HelperCall& call) noexcept {
    const auto [first, last] = calls_.equal_range(call.sender());
    calls_.erase(std::find_if(first, last, [&call](const auto& entry) { return entry.second == &call; }));
}

/// A connection stays up as long as anybody holds it.
void HelperService::leaveBus() {
    ::close(busSocket_);
}

void HelperService::accept(sd_bus_message* message) {
    HelperCall::Service& self = *this;
    auto call = std::make_unique<HelperCall>(self, message);
    const CallText& text = call->text();
    const std::size_t bytes = text.size;
    const bool isOneTooMany = waiting_.size() >= kMostWaiting || calls_.count(call->sender()) > kMostWaitingOfOne ||
                              waitingBytes_ + bytes > kMostWaitingBytes;
    if (isOneTooMany) return refuse(*call, SD_BUS_ERROR_LIMITS_EXCEEDED, isBusy());
    if (text.trouble) call->keepRefusalAlone(SD_BUS_ERROR_LIMITS_EXCEEDED, answerFor(*text.trouble));
    if (!text.isWhole || !call->askWhoCalls()) return refuse(*call, SD_BUS_ERROR_ACCESS_DENIED, isNobody());
    waitingBytes_ += bytes;
    waiting_.emplace(call.get(), std::move(call));
}

void HelperService::proceed(HelperCall& call, sd_bus_message* answer) noexcept {
    jobs_.loop().call([&] { admit(call, call.learnCaller(answer)); });
}

void HelperService::admit(HelperCall& known, HelperCall::Caller caller) {
    auto call = std::move(waiting_.extract(&known).mapped());
    waitingBytes_ -= call->text().size;
    begin(call, caller);
    if (!isStopping_ && !isNameless_) return;
    // Not from within the bus, which leave() has to have served.
    leaving_ = jobs_.loop().after({}, [this] {
        if (isDone()) leave();
    });
}

void HelperService::begin(std::unique_ptr<HelperCall>& call, HelperCall::Caller caller) {
    using Caller = HelperCall::Caller;
    if (caller == Caller::isLostInAFlood) return refuse(*call, SD_BUS_ERROR_LIMITS_EXCEEDED, isBusy());
    if (caller == Caller::isUnknown) return refuse(*call, SD_BUS_ERROR_ACCESS_DENIED, isNobody());
    if (isStopping_) return refuse(*call, SD_BUS_ERROR_FAILED, isBeingStopped());
    if (call->text().trouble) return refuse(*call, SD_BUS_ERROR_LIMITS_EXCEEDED, *call->text().trouble);
    auto place = jobs_.admit(call->uid());
    if (!place) return refuse(*call, SD_BUS_ERROR_LIMITS_EXCEEDED, place.problem());
    idle_.reset();
    jobs_.start(std::move(place.value()), std::move(call));
}

void HelperService::answer(const HelperCall& call, const RequestEnd& end) {
    using Kind = RequestEnd::Kind;
    if (call.callerIsGone && !end.begun) {
        log_.refused(call.uid(), shown(call) + ": " + "gone before the request was begun; nothing was done");
    } else if (end.kind == Kind::notStarted) {
        refuse(call, SD_BUS_ERROR_FAILED, refused("no process can be started for the request."));
    } else if (end.kind == Kind::answered) {
        if (!call.reply(carriable(end.text))) {
            // Without any answer the caller would wait for ever.
            refuse(call, SD_BUS_ERROR_FAILED, failed("the answer could not be sent; the request was carried out."));
        }
    } else if (isStopping_ && !end.begun) {
        refuse(call, SD_BUS_ERROR_FAILED, isBeingStopped());
    } else if (end.kind == Kind::denied) {
        refuse(call, SD_BUS_ERROR_ACCESS_DENIED, end.text);
    } else {
        refuse(call, SD_BUS_ERROR_FAILED,
               failed("the request's process ended before it was done. If it was a write, repeat it."));
    }
    if (!isDone()) return;
    if (isStopping_ || isNameless_) return leave();
    beginIdleness();
}

void HelperService::refuse(const HelperCall& call, const char* errorName, const Problem& problem) {
    refuse(call, errorName, answerFor(problem));
}

void HelperService::refuse(const HelperCall& call, const char* errorName, const std::string& text) {
    log_.refused(call.uid(), shown(call) + ": " + text);
    call.refuse(errorName, text);
}

std::string HelperService::shown(const HelperCall& call) {
    const std::string who =
        call.uid() == RequestLog::kUnknown ? "unknown: " : "user " + std::to_string(call.uid()) + ": ";
    return shownCommandLine(who, call.text().asked.command, call.text().asked.arguments);
}

int HelperService::onNameGone(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& service = *static_cast<HelperService*>(self);
    const char* name = nullptr;
    if (sd_bus_message_read(message, "s", &name) <= 0) return 0;
    const auto [first, last] = service.calls_.equal_range(name);
    std::for_each(first, last, [&](const auto& entry) {
        entry.second->callerIsGone = true;
        service.jobs_.loop().call([&] { service.jobs_.giveUp(*entry.second); });
    });
    return 0;
}

int HelperService::onDisconnected(sd_bus_message*, void* self, sd_bus_error*) {
    auto& service = *static_cast<HelperService*>(self);
    service.isConnected_ = false;
    service.jobs_.loop().call([&service] {
        service.log_.write("The system bus is gone.");
        service.stop();
    });
    return 0;
}

void HelperService::stop() {
    if (!std::exchange(isStopping_, true))
        log_.write(jobs_.isEmpty() ? "stopping" : "stopping after the work that runs");
    // Asking for a password is not work; a prompt may stay open for ever.
    jobs_.giveUpWaiting();
    if (isDone()) leave();
}

bool HelperService::isDone() const {
    return jobs_.isEmpty() && waiting_.empty();
}

void HelperService::leave() {
    if (isConnected_ && !std::exchange(isNameless_, true)) {
        // Who asks from now on starts another helper. Who asked before is still heard.
        sd_bus_release_name(bus_.get(), kHelperLabel);
        while (sd_bus_process(bus_.get(), nullptr) > 0) {
        }
    }
    if (isDone()) jobs_.loop().end();
}

void HelperService::beginIdleness() {
    idle_ = jobs_.loop().after(idleTime_, [this] { isDone() ? leave() : beginIdleness(); });
}

}  // namespace kestrav
