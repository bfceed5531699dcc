#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>
#include <vector>

#include "base/SdBusPointers.h"

namespace kestrav {

/// A helper on a bus, in this process, on a thread of its own: answers as `answer` says and keeps what it was asked.
class BusHelper {
  public:
    struct Request {
        std::string cmd;
        std::vector<std::string> arguments;
        bool mayAskThePerson = false;
        std::string sender;
    };
    /// Answers one request with sd_bus_reply_...; a request that is not answered stays open.
    using Answer = std::function<int(sd_bus_message*)>;

    BusHelper(const std::string& address, Answer answer, const char* name = "com.corvatel.KestravHelper");
    ~BusHelper();
    BusHelper(const BusHelper&) = delete;
    BusHelper& operator=(const BusHelper&) = delete;

    std::vector<Request> requests() const;
    bool waitForRequests(std::size_t count) const;

  private:
    static int onCall(sd_bus_message* message, void* self, sd_bus_error* error);
    void serve();

    Answer answer_;
    SdBusPtr bus_;
    std::vector<SdBusMessagePtr> open_;
    mutable std::mutex mutex_;
    std::vector<Request> requests_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace kestrav
