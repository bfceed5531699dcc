#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "command/HelperChannel.h"

namespace kestrav {

/// A channel to a helper that does nothing by itself: the test answers the requests it finds in `connections`.
class FakeHelperChannel final : public HelperChannel {
  public:
    struct Request {
        std::string cmd;
        std::vector<std::string> arguments;
        JobProtocol::Reply reply;
        HelperConnection::ErrorHandler fail;
    };

    struct Connection final : HelperConnection {
        std::string service;
        HelperChannelOptions options{};
        HelperConnectionHandlers handlers;
        bool offersTheProtocol = true;
        int invalidations = 0;
        std::vector<Request> requests;
        std::function<void(Request&)> onRequest;

        std::shared_ptr<JobProtocol> remoteProxy(ErrorHandler errorHandler) override {
            if (!offersTheProtocol) return nullptr;
            return std::make_shared<Proxy>(*this, std::move(errorHandler));
        }
        void invalidate() override {
            if (invalidations++ == 0) handlers.invalidated();
        }
    };

    bool offersTheProtocol = true;
    std::function<void(Request&)> onRequest;  ///< answers at once where it is set
    std::vector<std::shared_ptr<Connection>> connections;

    std::shared_ptr<HelperConnection> open(std::string_view service, HelperChannelOptions options,
                                           HelperConnectionHandlers handlers) override {
        auto connection = std::make_shared<Connection>();
        connection->service = service;
        connection->options = options;
        connection->handlers = std::move(handlers);
        connection->offersTheProtocol = offersTheProtocol;
        connection->onRequest = onRequest;
        connections.push_back(connection);
        return connection;
    }

  private:
    class Proxy final : public JobProtocol {
      public:
        Proxy(Connection& connection, HelperConnection::ErrorHandler fail)
            : connection_(connection),
              fail_(std::move(fail)) {}
        void runWithCmd(std::string_view cmd, std::span<const std::string> arguments, Reply withReply) override {
            connection_.requests.push_back(
                {std::string(cmd), {arguments.begin(), arguments.end()}, std::move(withReply), fail_});
            if (connection_.onRequest) connection_.onRequest(connection_.requests.back());
        }

      private:
        Connection& connection_;
        HelperConnection::ErrorHandler fail_;
    };
};

}  // namespace kestrav
