#include "services/helper/HelperService.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "base/utf8.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/RequestLog.h"

namespace kestrav {
namespace {

// Given by the D-Bus specification; a variable of the environment must not lead root elsewhere.
constexpr const char* systemBusAddress = "unix:path=/run/dbus/system_bus_socket";
constexpr const char* busName = "com.corvatel.KestravHelper";
constexpr const char* objectPath = "/com/corvatel/KestravHelper";

constexpr std::size_t mostJobs = 64;
constexpr std::ptrdiff_t mostJobsOfAUser = 48;  // so that one user's prompts don't keep root and others out
constexpr std::size_t longestRequest = std::size_t{64} * 1024;

std::size_t sizeOf(const HelperRequest& request) {
    std::size_t size = request.cmd.size();
    for (const std::string& argument : request.arguments)
        size += argument.size() + 1;
    return size;
}

/// Reads "sas" and who sent it.
int read(sd_bus_message* message, HelperRequest& request) {
    const char* cmd = nullptr;
    if (const int result = sd_bus_message_read(message, "s", &cmd); result < 0) return result;
    request.cmd = cmd;
    if (const int result = sd_bus_message_enter_container(message, 'a', "s"); result < 0) return result;
    const char* argument = nullptr;
    int result = 0;
    while ((result = sd_bus_message_read(message, "s", &argument)) > 0)
        request.arguments.emplace_back(argument);
    if (result < 0) return result;
    request.mayInteract = sd_bus_message_get_allow_interactive_authorization(message) > 0;
    if (const char* sender = sd_bus_message_get_sender(message); sender != nullptr) request.sender = sender;
    // The bus knows this from the socket; nothing in the message is believed.
    sd_bus_creds* raw = nullptr;
    result = sd_bus_query_sender_creds(message, SD_BUS_CREDS_EUID, &raw);
    const SdBusCredsPtr creds(raw);
    return result < 0 ? result : sd_bus_creds_get_euid(raw, &request.uid);
}

/// Blocks of a disk aren't text, and the bus carries nothing else.
std::string carriable(const std::string& answer) {
    if (answer.find('\0') == std::string::npos && isValidUTF8(answer)) return answer;
    constexpr char digits[] = "0123456789abcdef";
    std::string hexadecimal;
    hexadecimal.reserve(answer.size() * 2);
    for (const char c : answer) {
        const auto byte = static_cast<unsigned char>(c);
        hexadecimal += digits[byte >> 4U];
        hexadecimal += digits[byte & 0x0fU];
    }
    return hexadecimal;
}

std::string line(const HelperRequest& request) {
    std::string text = "user " + std::to_string(request.uid) + ": " + shown(request.cmd, 40);
    for (const std::string& argument : request.arguments) {
        text += ' ' + shown(argument);
        if (text.size() > 2000) return text + " ...: ";
    }
    return text + ": ";
}

}  // namespace

const sd_bus_vtable HelperService::operations[] = {
    SD_BUS_VTABLE_START(0),
    // Everybody may ask; who is served is polkit's decision.
    SD_BUS_METHOD_WITH_ARGS("runWithCmd", SD_BUS_ARGS("s", cmd, "as", arguments), SD_BUS_RESULT("s", text),
                            HelperService::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

bool HelperService::run() {
    if (const int result = open(); result < 0) {
        log_.write("The helper can't serve on the system bus: " + systemWords(-result) + ".");
        return false;
    }
    log_.write("ready");
    beginIdleness();
    return sd_event_loop(event_.get()) >= 0 && connected_;
}

int HelperService::open() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGCHLD})
        sigaddset(&signals, number);
    if (::sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) return -errno;
    sd_event* raw = nullptr;
    if (const int result = sd_event_new(&raw); result < 0) return result;
    event_.reset(raw);
    for (const int number : {SIGTERM, SIGINT}) {
        if (const int result = sd_event_add_signal(raw, nullptr, number, onSignal, this); result < 0) return result;
    }
    return openBus();
}

int HelperService::openBus() {
    sd_bus* raw = nullptr;
    if (const int result = sd_bus_new(&raw); result < 0) return result;
    bus_.reset(raw);
    int result = sd_bus_set_address(raw, systemBusAddress);
    if (result >= 0) result = sd_bus_set_bus_client(raw, 1);
    if (result >= 0) result = sd_bus_start(raw);
    if (result >= 0) result = sd_bus_add_object_vtable(raw, nullptr, objectPath, busName, operations, this);
    if (result >= 0) {
        result = sd_bus_match_signal(raw, nullptr, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                                     "org.freedesktop.DBus.Local", "Disconnected", onDisconnected, this);
    }
    if (result >= 0) result = sd_bus_attach_event(raw, event_.get(), SD_EVENT_PRIORITY_NORMAL);
    // Only now: what comes with the name finds everything in its place.
    if (result >= 0) result = sd_bus_request_name(raw, busName, 0);
    connected_ = result >= 0;
    return result;
}

int HelperService::onCall(sd_bus_message* message, void* self, sd_bus_error*) {
    return static_cast<HelperService*>(self)->accept(message);
}

int HelperService::accept(sd_bus_message* message) {
    log_.summarise();
    HelperRequest request;
    request.uid = RequestLog::kUnknown;
    if (const int result = read(message, request); result < 0) {
        return refuse(message, SD_BUS_ERROR_ACCESS_DENIED, request,
                      answerFor(refused("the system does not tell who is asking.")));
    }
    if (retiring_) {
        return refuse(message, SD_BUS_ERROR_FAILED, request,
                      answerFor(refused("the helper is being stopped; try again in a moment.")));
    }
    if (sizeOf(request) > longestRequest) {
        return refuse(message, SD_BUS_ERROR_LIMITS_EXCEEDED, request,
                      answerFor(refused("the request is longer than 64 KiB.")));
    }
    if (isFull(request.uid)) {
        return refuse(message, SD_BUS_ERROR_LIMITS_EXCEEDED, request,
                      answerFor(refused("the helper is busy; try again in a moment.")));
    }
    return start(std::move(request), message);
}

int HelperService::start(HelperRequest request, sd_bus_message* message) {
    auto process = std::make_unique<JobProcess>(request, sd_bus_get_fd(bus_.get()), consent_, gate_);
    const pid_t pid = process->pid();
    if (pid < 0) {
        return refuse(message, SD_BUS_ERROR_FAILED, request,
                      answerFor(refused("no process can be started for the request.")));
    }
    idle_.reset();
    const auto [job, isNew] = jobs_.emplace(
        pid,
        Job{*this, std::move(request), SdBusMessagePtr(sd_bus_message_ref(message)), std::move(process), {}, {}, {}});
    if (const int result = follow(job->second); result < 0) {
        // Nobody would hear of its end: it must not begin.
        job->second.process->cancel();
        ::waitpid(pid, nullptr, 0);
        jobs_.erase(job);
        return result;
    }
    return 1;
}

int HelperService::follow(Job& job) {
    sd_bus_track* track = nullptr;
    int result = sd_bus_track_new(bus_.get(), &track, onCallerGone, &job);
    job.caller.reset(track);
    if (result >= 0) result = sd_bus_track_add_sender(track, job.message.get());
    if (result < 0) return result;
    sd_event_source* source = nullptr;
    result = sd_event_add_io(event_.get(), &source, job.process->fd(), EPOLLIN, onChannel, &job);
    job.channelSource.reset(source);
    if (result < 0) return result;
    source = nullptr;
    result = sd_event_add_child(event_.get(), &source, job.process->pid(), WEXITED, onEnd, &job);
    job.endSource.reset(source);
    return result;
}

bool HelperService::isFull(uid_t uid) const {
    if (jobs_.size() >= mostJobs) return true;
    const auto sameUser = [uid](const auto& entry) { return entry.second.request.uid == uid; };
    return uid != 0 && std::ranges::count_if(jobs_, sameUser) >= mostJobsOfAUser;
}

int HelperService::onChannel(sd_event_source* source, int, std::uint32_t, void* job) {
    auto& self = *static_cast<Job*>(job);
    if (self.process->listen() && !self.callerGone && !self.service.retiring_) self.process->begin();
    // What is said at the end is taken at the end; a closed channel would be readable for ever.
    if (self.process->begun()) sd_event_source_set_enabled(source, SD_EVENT_OFF);
    return 0;
}

int HelperService::onCallerGone(sd_bus_track*, void* job) {
    auto& self = *static_cast<Job*>(job);
    self.callerGone = true;
    if (!self.process->begun()) self.process->cancel();
    return 0;
}

int HelperService::onEnd(sd_event_source*, const siginfo_t*, void* job) {
    auto& self = *static_cast<Job*>(job);
    self.process->listen();
    self.service.finish(self);
    return 0;
}

void HelperService::finish(Job& job) {
    answer(job);
    jobs_.erase(job.process->pid());
    if (!jobs_.empty()) return;
    if (retiring_ || nameless_) return leave();
    beginIdleness();
}

void HelperService::answer(const Job& job) {
    const auto& result = job.process->answer();
    if (job.callerGone && !job.process->begun()) {
        log_.refused(job.request.uid, line(job.request) + "gone before the request was begun; nothing was done");
    } else if (result && !result->refused) {
        if (sd_bus_reply_method_return(job.message.get(), "s", carriable(result->text).c_str()) < 0) {
            // Without any answer the caller would wait for ever.
            refuse(job.message.get(), SD_BUS_ERROR_FAILED, job.request,
                   answerFor(failed("the answer could not be sent; the request was carried out.")));
        }
    } else if (result) {
        refuse(job.message.get(), SD_BUS_ERROR_ACCESS_DENIED, job.request, result->text);
    } else if (!job.process->begun() && retiring_) {
        refuse(job.message.get(), SD_BUS_ERROR_FAILED, job.request,
               answerFor(refused("the helper is being stopped; try again in a moment.")));
    } else {
        refuse(job.message.get(), SD_BUS_ERROR_FAILED, job.request,
               answerFor(failed("the request's process ended before it was done. If it was a write, repeat it.")));
    }
}

int HelperService::refuse(sd_bus_message* message, const char* errorName, const HelperRequest& request,
                          const std::string& text) {
    log_.refused(request.uid, line(request) + text);
    sd_bus_reply_method_errorf(message, errorName, "%s", text.c_str());
    return 1;
}

int HelperService::onSignal(sd_event_source*, const signalfd_siginfo*, void* self) {
    static_cast<HelperService*>(self)->retire();
    return 0;
}

int HelperService::onDisconnected(sd_bus_message*, void* self, sd_bus_error*) {
    auto& service = *static_cast<HelperService*>(self);
    service.connected_ = false;
    service.log_.write("The system bus is gone.");
    service.retire();
    return 0;
}

void HelperService::retire() {
    if (!std::exchange(retiring_, true)) log_.write(jobs_.empty() ? "stopping" : "stopping after the work that runs");
    // Asking for a password is not work; a prompt may stay open for ever.
    for (const auto& [pid, job] : jobs_) {
        if (!job.process->begun()) job.process->cancel();
    }
    if (jobs_.empty()) leave();
}

void HelperService::leave() {
    if (connected_ && !std::exchange(nameless_, true)) {
        // Who asks from now on starts another helper. Who asked before is still heard.
        sd_bus_release_name(bus_.get(), busName);
        while (sd_bus_process(bus_.get(), nullptr) > 0) {
        }
    }
    if (!jobs_.empty()) return;
    log_.finish();
    sd_bus_flush(bus_.get());
    sd_event_exit(event_.get(), 0);
}

void HelperService::beginIdleness() {
    sd_event_source* source = nullptr;
    const auto microseconds = static_cast<std::uint64_t>(std::chrono::microseconds(kIdleTime).count());
    // A second's accuracy lets the system wake up for several things at once.
    if (sd_event_add_time_relative(event_.get(), &source, CLOCK_MONOTONIC, microseconds, 1'000'000, onIdle, this) < 0) {
        return;
    }
    idle_.reset(source);
}

int HelperService::onIdle(sd_event_source*, std::uint64_t, void* self) {
    auto& service = *static_cast<HelperService*>(self);
    if (service.jobs_.empty()) service.leave();
    return 0;
}

}  // namespace kestrav
