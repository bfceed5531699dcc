#pragma once

#include <list>
#include <string>

#include "base/Outcome.h"
#include "base/SdBusPointers.h"
#include "command/linux/HelperCallQueue.h"

namespace kestrav {

/// One connection to the bus and the requests under way on it: all that the connection's thread does. Made on any
/// thread, then `run` on one; handlers are called from within `run`.
class HelperBusWorker {
  public:
    HelperBusWorker(std::string busAddress, std::string service, HelperConnectionHandlers handlers,
                    HelperCallQueue& queue);

    /// Serves the queue until it is closed, then ends what is under way.
    void run();

  private:
    struct InFlight {
        HelperBusWorker& worker;
        HelperCall call;
        SdBusSlotPtr slot;
        std::list<InFlight>::iterator self;
    };

    Outcome<void> connect();
    Outcome<void> watchOwner();
    void serve();
    void process();
    void wait();
    void disconnect();
    void start(HelperCall call);
    int send(InFlight& request);
    void finish(InFlight& request, sd_bus_message* answer);
    /// The connection is over: whatever is under way fails for `reason`, and so does all that comes later.
    void breakOff(const std::string& reason);

    static int onAnswer(sd_bus_message* answer, void* inFlight, sd_bus_error* error);
    static int onOwnerChanged(sd_bus_message* signal, void* worker, sd_bus_error* error);

    std::string busAddress_;
    std::string service_;
    HelperConnectionHandlers handlers_;
    HelperCallQueue& queue_;
    SdBusPtr bus_;
    SdBusSlotPtr ownerWatch_;
    std::list<InFlight> inFlight_;
    bool spokenTo_ = false;  ///< the service's owner has been sent a request
    std::string broken_;     ///< why the connection is over; empty while it is not
};

}  // namespace kestrav
