#include "command/linux/SdBusHelperChannel.h"

#include <csignal>
#include <memory>
#include <thread>
#include <utility>

#include "base/stopProcess.h"
#include "command/linux/HelperBusWorker.h"

namespace kestrav {
namespace {

class QueueProxy final : public JobProtocol {
  public:
    QueueProxy(std::shared_ptr<HelperCallQueue> queue, HelperConnection::ErrorHandler errorHandler)
        : queue_(std::move(queue)),
          errorHandler_(std::move(errorHandler)) {}

    void runWithCmd(std::string_view cmd, std::span<const std::string> arguments, Reply withReply) override {
        HelperCall call{std::string(cmd), {arguments.begin(), arguments.end()}, std::move(withReply), errorHandler_};
        if (!queue_->put(std::move(call))) errorHandler_("The connection was closed.");
    }

  private:
    std::shared_ptr<HelperCallQueue> queue_;
    HelperConnection::ErrorHandler errorHandler_;
};

class SdBusConnection final : public HelperConnection {
  public:
    SdBusConnection(std::string busAddress, std::string service, HelperConnectionHandlers handlers)
        : worker_(std::move(busAddress), std::move(service), std::move(handlers), *queue_) {
        // Signals are for the threads that expect them; a new thread inherits who may be disturbed.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        thread_ = std::thread([this] { worker_.run(); });
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    ~SdBusConnection() override { close(); }
    SdBusConnection(const SdBusConnection&) = delete;
    SdBusConnection& operator=(const SdBusConnection&) = delete;

    std::shared_ptr<JobProtocol> remoteProxy(ErrorHandler errorHandler) override {
        return std::make_shared<QueueProxy>(queue_, std::move(errorHandler));
    }

    void invalidate() override { close(); }

  private:
    void close() {
        queue_->close();
        if (thread_.joinable()) thread_.join();
    }

    std::shared_ptr<HelperCallQueue> queue_ = std::make_shared<HelperCallQueue>();
    HelperBusWorker worker_;
    std::thread thread_;
};

}  // namespace

std::shared_ptr<HelperConnection> SdBusHelperChannel::open(std::string_view service, HelperChannelOptions options,
                                                           HelperConnectionHandlers handlers) {
    // The system's services are the only ones this channel knows.
    require(options == HelperChannelOptions::privileged);
    return std::make_shared<SdBusConnection>(busAddress_, std::string(service), std::move(handlers));
}

}  // namespace kestrav
