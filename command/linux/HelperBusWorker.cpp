#include "command/linux/HelperBusWorker.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <poll.h>
#include <string_view>
#include <utility>

#include "base/openSystemBus.h"
#include "base/systemProblem.h"
#include "base/systemWords.h"

namespace kestrav {
namespace {

std::string objectPath(const std::string& service) {
    std::string path = "/" + service;
    std::ranges::replace(path, '.', '/');
    return path;
}

std::string describe(const sd_bus_error& error) {
    if (error.message != nullptr && *error.message != '\0') return error.message;
    return error.name != nullptr ? error.name : "The request failed.";
}

/// Whether the bus says that nobody bears the service's name and that nobody can be started to bear it.
bool cannotBeStarted(const sd_bus_error& error) {
    if (error.name == nullptr) return false;
    const std::string_view name = error.name;
    return name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
           name == "org.freedesktop.DBus.Error.TimedOut" || name.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
           name.starts_with("org.freedesktop.systemd1.");
}

bool holdsNul(const HelperCall& call) {
    const auto has = [](const std::string& text) { return text.find('\0') != std::string::npos; };
    return has(call.cmd) || std::ranges::any_of(call.arguments, has);
}

/// Milliseconds for poll(2) until `deadline`, in microseconds of the monotonic clock; -1 for none.
int millisecondsUntil(std::uint64_t deadline) {
    if (deadline == UINT64_MAX) return -1;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto past =
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
    if (deadline <= past) return 0;
    return static_cast<int>(std::min<std::uint64_t>((deadline - past + 999) / 1000, 60'000));
}

}  // namespace

HelperBusWorker::HelperBusWorker(std::string busAddress, std::string service, HelperConnectionHandlers handlers,
                                 HelperCallQueue& queue)
    : busAddress_(std::move(busAddress)),
      service_(std::move(service)),
      handlers_(std::move(handlers)),
      queue_(queue) {}

void HelperBusWorker::run() {
    if (const auto connected = connect(); !connected) {
        breakOff("The system bus can't be reached: " + systemWords(connected.problem().cause.value()));
    }
    serve();
    breakOff("The connection was closed.");
    disconnect();
}

Outcome<void> HelperBusWorker::connect() {
    if (sd_bus_service_name_is_valid(service_.c_str()) <= 0) return systemProblem(EINVAL);
    auto bus = openSystemBus(busAddress_);
    if (!bus) return bus.problem();
    bus_ = std::move(bus.value());
    return watchOwner();
}

Outcome<void> HelperBusWorker::watchOwner() {
    const std::string match =
        "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
        "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
        service_ + "'";
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match_async(bus_.get(), &slot, match.c_str(), onOwnerChanged, nullptr, this);
    ownerWatch_.reset(slot);
    if (result < 0) return systemProblem(-result);
    return {};
}

void HelperBusWorker::serve() {
    for (;;) {
        auto [calls, closed] = queue_.take();
        for (HelperCall& call : calls)
            start(std::move(call));
        if (closed) return;
        process();
        wait();
    }
}

void HelperBusWorker::process() {
    int result = broken_.empty() ? 1 : 0;
    while (result > 0 && broken_.empty())
        result = sd_bus_process(bus_.get(), nullptr);
    if (result < 0) breakOff("The connection to the system bus is gone: " + systemWords(-result));
    // Only here, where no callback of the bus is running.
    if (!broken_.empty()) disconnect();
}

void HelperBusWorker::wait() {
    std::array<pollfd, 2> polled{pollfd{queue_.wakeUpFd(), POLLIN, 0}, pollfd{-1, 0, 0}};
    std::uint64_t deadline = UINT64_MAX;
    if (bus_) {
        const int events = sd_bus_get_events(bus_.get());
        // A bus that can't say what it waits for is processed again at once, which tells why.
        if (events < 0) return;
        polled[1] = {sd_bus_get_fd(bus_.get()), static_cast<short>(events), 0};
        sd_bus_get_timeout(bus_.get(), &deadline);
    }
    ::poll(polled.data(), polled.size(), millisecondsUntil(deadline));
}

void HelperBusWorker::disconnect() {
    ownerWatch_.reset();
    bus_.reset();
}

void HelperBusWorker::start(HelperCall call) {
    if (!broken_.empty()) return call.fail(broken_);
    if (holdsNul(call)) return call.fail("A command can't hold a NUL character.");
    inFlight_.push_back({*this, std::move(call), nullptr, {}});
    InFlight& request = inFlight_.back();
    request.self = std::prev(inFlight_.end());
    const int result = send(request);
    if (result >= 0) {
        spokenTo_ = true;
        return;
    }
    const HelperCall failed = std::move(request.call);
    inFlight_.pop_back();
    failed.fail("The request can't be sent: " + systemWords(-result));
}

int HelperBusWorker::send(InFlight& request) {
    sd_bus_message* raw = nullptr;
    const std::string path = objectPath(service_);
    int result = sd_bus_message_new_method_call(bus_.get(), &raw, service_.c_str(), path.c_str(), service_.c_str(),
                                                "runWithCmd");
    const SdBusMessagePtr message(raw);
    if (result < 0) return result;
    // The helper may ask the person at the screen for a password, which is what this request is made for.
    sd_bus_message_set_allow_interactive_authorization(raw, 1);
    result = sd_bus_message_append(raw, "s", request.call.cmd.c_str());
    if (result < 0) return result;
    std::vector<char*> arguments;
    for (std::string& argument : request.call.arguments)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    result = sd_bus_message_append_strv(raw, arguments.data());
    if (result < 0) return result;
    sd_bus_slot* slot = nullptr;
    result = sd_bus_call_async(bus_.get(), &slot, raw, onAnswer, &request, UINT64_MAX);
    request.slot.reset(slot);
    return result;
}

void HelperBusWorker::finish(InFlight& request, sd_bus_message* answer) {
    const HelperCall call = std::move(request.call);
    inFlight_.erase(request.self);
    if (const sd_bus_error* error = sd_bus_message_get_error(answer); error != nullptr) {
        const std::string description = describe(*error);
        call.fail(description);
        if (cannotBeStarted(*error)) breakOff(description);
        return;
    }
    const char* text = nullptr;
    if (sd_bus_message_read(answer, "s", &text) < 0) return call.fail("The helper's answer can't be understood.");
    call.reply(text);
}

void HelperBusWorker::breakOff(const std::string& reason) {
    if (!broken_.empty()) return;
    broken_ = reason;
    for (const InFlight& request : std::exchange(inFlight_, {}))
        request.call.fail(reason);
    handlers_.invalidated();
}

int HelperBusWorker::onAnswer(sd_bus_message* answer, void* inFlight, sd_bus_error*) {
    auto& request = *static_cast<InFlight*>(inFlight);
    request.worker.finish(request, answer);
    return 0;
}

int HelperBusWorker::onOwnerChanged(sd_bus_message* signal, void* worker, sd_bus_error*) {
    auto& self = *static_cast<HelperBusWorker*>(worker);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &now) < 0) return 0;
    // A helper that served others only and went away is nothing to this connection.
    if (*before != '\0' && std::exchange(self.spokenTo_, false)) self.handlers_.interrupted();
    return 0;
}

}  // namespace kestrav
