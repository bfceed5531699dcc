#pragma once

#include <memory>
#include <systemd/sd-event.h>

namespace kestrav {

/// Owners of what libsystemd's event loop hands out.
struct EventRelease {
    void operator()(sd_event* event) const noexcept { sd_event_unref(event); }
    /// Disabled as well: a source may be held by the loop a little longer.
    void operator()(sd_event_source* source) const noexcept { sd_event_source_disable_unref(source); }
};

using EventPtr = std::unique_ptr<sd_event, EventRelease>;
using EventSourcePtr = std::unique_ptr<sd_event_source, EventRelease>;

}  // namespace kestrav
