#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "base/SdBusPointers.h"
#include "services/helper/HelperCall.h"
#include "services/jobs/JobTable.h"

namespace kestrav {

/// com.corvatel.KestravHelper on the system bus: its one operation runWithCmd(s, as) -> s hands a command line to the
/// job table and sends the answer.
///
/// Ends itself when it had nothing to do for a minute, and after a signal that ends it as soon as no work runs;
/// requests that still wait for consent are refused then. One thread.
///
/// Never waits for the bus, and takes one message at a time: what strangers send stays with the bus until then, and of
/// a message no more is read than a request may be long.
class HelperService final : private JobTable::Service, private HelperCall::Service {
  public:
    static constexpr std::chrono::seconds kIdleTime{60};

    /// Nothing is owned. Raises std::system_error.
    HelperService(Gate& gate, RequestLog& log, std::chrono::milliseconds idleTime = kIdleTime);
    ~HelperService() override;
    HelperService(const HelperService&) = delete;
    HelperService& operator=(const HelperService&) = delete;

    /// Serves until there is nothing more to do. False when it could not take its name on the bus, or the bus went
    /// away, or something failed.
    bool run();

  private:
    Outcome<void> open();
    void accept(sd_bus_message* message);
    void admit(HelperCall& known, HelperCall::Caller caller);
    void begin(std::unique_ptr<HelperCall>& call, HelperCall::Caller caller);
    void refuse(const HelperCall& call, const char* errorName, const Problem& problem);
    void refuse(const HelperCall& call, const char* errorName, const std::string& text);
    static std::string shown(const HelperCall& call);
    void enter(HelperCall& call) override;
    void leave(HelperCall& call) noexcept override;
    void proceed(HelperCall& call, sd_bus_message* answer) noexcept override;
    void answer(const HelperCall& call, const RequestEnd& end) override;
    void leaveBus() override;
    bool isDone() const;
    void stop() override;
    void takeNothingMore() noexcept override {}
    void leave();
    void beginIdleness();

    static int onCall(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onNameGone(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onDisconnected(sd_bus_message* message, void* self, sd_bus_error* error);
    static const sd_bus_vtable kOperations[];

    RequestLog& log_;
    std::chrono::milliseconds idleTime_;
    bool isStopping_ = false;  ///< nothing new is taken
    bool isNameless_ = false;  ///< the name was given back; what had arrived before is still served
    bool isConnected_ = false;
    SdBusPtr bus_;
    int busSocket_ = -1;                             ///< the connection's, which owns it
    std::multimap<std::string, HelperCall*> calls_;  ///< all, by the caller's name on the bus
    JobTable jobs_;
    std::map<HelperCall*, std::unique_ptr<HelperCall>> waiting_;  ///< until the bus has said who calls
    std::size_t waitingBytes_ = 0;
    EventLoop::Watch idle_;
    EventLoop::Watch leaving_;
};

}  // namespace kestrav
