#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "command/JobProtocol.h"

namespace kestrav {

/// Where a service is looked up.
enum class HelperChannelOptions : std::uint32_t {
    privileged = 4096,  ///< among the system's services, not the user's own
};

/// What a connection reports of itself, on its own thread. Both are set for the life of the connection.
struct HelperConnectionHandlers {
    std::function<void()> interrupted;  ///< the helper went away; a later request may start it again
    std::function<void()> invalidated;  ///< the connection can't be used any more; called once
};

/// One connection to the helper. Used by one thread, the one that opened it; it keeps a thread of its own for what
/// comes back. Its destructor invalidates it.
class HelperConnection {
  public:
    /// Takes one sentence on what went wrong with one request. Called on the connection's own thread.
    using ErrorHandler = std::function<void(std::string_view description)>;

    virtual ~HelperConnection() = default;

    /// The helper seen through this connection, or null when it doesn't offer `JobProtocol`. A request made on it ends
    /// with either its reply or `errorHandler`, never both. The proxy may outlive the connection: then requests fail
    /// at once, on the thread that makes them.
    virtual std::shared_ptr<JobProtocol> remoteProxy(ErrorHandler errorHandler) = 0;

    /// Ends the connection: requests under way fail, then `invalidated` is called, unless it has been called before.
    /// Nothing more comes from the connection's thread once this has returned.
    virtual void invalidate() = 0;
};

/// Opens connections to a helper.
class HelperChannel {
  public:
    virtual ~HelperChannel() = default;

    /// A connection to `service` that is ready to be used. It is made without waiting: a service that is missing is
    /// reported through `handlers` and through the requests.
    virtual std::shared_ptr<HelperConnection> open(std::string_view service, HelperChannelOptions options,
                                                   HelperConnectionHandlers handlers) = 0;
};

}  // namespace kestrav
