#pragma once

#include <string>

#include "command/HelperChannel.h"
#include "protocol/names.h"

namespace kestrav {

/// The helper as a service of the D-Bus system bus: its name is the service's name, its object and interface follow
/// from that name ("a.b" has the object "/a/b" and the interface "a.b"), its operation is `runWithCmd(s, as) -> s`.
///
/// A request waits for its answer as long as the helper has a name on the bus, without any time-out: a person may be
/// thinking over a password prompt. Interrupted means that the name lost its owner after it was spoken to;
/// invalidated, that the bus went away or that it can't start the service.
class SdBusHelperChannel final : public HelperChannel {
  public:
    explicit SdBusHelperChannel(std::string busAddress = kSystemBusAddress) : busAddress_(std::move(busAddress)) {}

    std::shared_ptr<HelperConnection> open(std::string_view service, HelperChannelOptions options,
                                           HelperConnectionHandlers handlers) override;

  private:
    std::string busAddress_;
};

}  // namespace kestrav
