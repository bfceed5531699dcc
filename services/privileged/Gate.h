#pragma once

#include <span>
#include <string>
#include <string_view>

#include "services/privileged/BlockDevices.h"
#include "services/privileged/Caller.h"
#include "services/privileged/CommandLine.h"
#include "services/privileged/ImageReader.h"
#include "services/privileged/MountTable.h"

namespace kestrav {

class RequestLog;

/// The one way to anything that is done with root's rights: every command line of every service passes it.
///
/// It trusts nothing in the command line. The disk must be the accessory's, the image is opened with the rights of the
/// one who asks, and what is written is read back. Whether that one may ask at all is settled before.
/// Blocks until the work is done; may fork; use it from a process with one thread. Nothing is kept between two calls.
class Gate {
  public:
    /// Nothing is owned; all outlive this object.
    Gate(const BlockDevices& devices, const MountTable& mounts, RequestLog& log, ImagePatience patience = {})
        : devices_(devices),
          mounts_(mounts),
          log_(log),
          patience_(patience) {}

    /// Carries a command line out and returns the answer: one line of UTF-8 text without line end, or for a read the
    /// blocks themselves; never empty, never more than 10239 bytes. Writes one line to the log.
    std::string perform(const Caller& caller, std::string_view command, std::span<const std::string> arguments);

  private:
    Outcome<std::string> carryOut(const Caller& caller, const PrivilegedRequest& request) const;
    Outcome<std::string> unmount(const UnmountRequest& request) const;
    Outcome<std::string> write(const WriteRequest& request, const Caller& caller) const;
    Outcome<std::string> read(const ReadRequest& request) const;

    const BlockDevices& devices_;
    const MountTable& mounts_;
    RequestLog& log_;
    ImagePatience patience_;
};

}  // namespace kestrav
