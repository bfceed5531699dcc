#pragma once

namespace kestrav {

/// Tells when disks and USB devices come and go, so that nobody has to ask again and again. What has changed the
/// registry says.
class DeviceEvents {
  public:
    virtual ~DeviceEvents() = default;

    /// Becomes readable when something has changed; -1 where nothing will ever be told. Not owned by the caller.
    virtual int descriptor() const = 0;

    /// Takes all that has been told so far, so that the descriptor is not readable any more, and says whether there was
    /// anything. Never waits.
    virtual bool take() = 0;
};

}  // namespace kestrav
