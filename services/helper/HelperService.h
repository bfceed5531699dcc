#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "base/SdBusPointers.h"
#include "services/helper/EventPointers.h"
#include "services/helper/JobProcess.h"

namespace kestrav {

class RequestLog;

/// com.corvatel.KestravHelper on the system bus: its one operation runWithCmd(s, as) -> s has a command line carried
/// out through the gate, after polkit's consent for everybody but root and the service's own user.
///
/// Ends itself when it had nothing to do for a minute, and after SIGTERM or SIGINT as soon as no work runs; requests
/// that still wait for consent are refused then. At most 64 requests at once, 48 of one user who is not root.
/// One thread.
class HelperService {
  public:
    static constexpr std::chrono::seconds kIdleTime{60};

    /// Nothing is owned.
    HelperService(Consent& consent, Gate& gate, RequestLog& log) : consent_(consent), gate_(gate), log_(log) {}
    HelperService(const HelperService&) = delete;
    HelperService& operator=(const HelperService&) = delete;

    /// Serves until there is nothing more to do. False when it could not take its name on the bus, or the bus went
    /// away.
    bool run();

  private:
    struct TrackRelease {
        void operator()(sd_bus_track* track) const noexcept { sd_bus_track_unref(track); }
    };
    using TrackPtr = std::unique_ptr<sd_bus_track, TrackRelease>;

    /// A request under way.
    struct Job {
        HelperService& service;
        HelperRequest request;
        SdBusMessagePtr message;  ///< answered at the end
        std::unique_ptr<JobProcess> process;
        TrackPtr caller;
        EventSourcePtr channelSource;
        EventSourcePtr endSource;
        bool callerGone = false;
    };

    int open();
    int openBus();
    int accept(sd_bus_message* message);
    int start(HelperRequest request, sd_bus_message* message);
    int follow(Job& job);
    bool isFull(uid_t uid) const;
    void finish(Job& job);
    void answer(const Job& job);
    int refuse(sd_bus_message* message, const char* errorName, const HelperRequest& request, const std::string& text);
    void retire();
    void leave();
    void beginIdleness();

    static int onCall(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onDisconnected(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onCallerGone(sd_bus_track* track, void* job);
    static int onChannel(sd_event_source* source, int fd, std::uint32_t events, void* job);
    static int onEnd(sd_event_source* source, const siginfo_t* info, void* job);
    static int onSignal(sd_event_source* source, const signalfd_siginfo* info, void* self);
    static int onIdle(sd_event_source* source, std::uint64_t time, void* self);

    static const sd_bus_vtable operations[];

    Consent& consent_;
    Gate& gate_;
    RequestLog& log_;
    EventPtr event_;
    SdBusPtr bus_;
    EventSourcePtr idle_;
    std::map<pid_t, Job> jobs_;
    bool retiring_ = false;  ///< nothing new is taken
    bool nameless_ = false;  ///< the name was given back; what had arrived before is still served
    bool connected_ = false;
};

}  // namespace kestrav
