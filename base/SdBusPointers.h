#pragma once

#include <memory>
#include <systemd/sd-bus.h>

namespace kestrav {

/// Owners of what libsystemd's bus library hands out. Nothing of one connection may be used on two threads at once.
struct SdBusRelease {
    /// What was not sent yet is dropped: whoever needs it sent flushes before.
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
    void operator()(sd_bus_creds* creds) const noexcept { sd_bus_creds_unref(creds); }
};

using SdBusPtr = std::unique_ptr<sd_bus, SdBusRelease>;
using SdBusSlotPtr = std::unique_ptr<sd_bus_slot, SdBusRelease>;
using SdBusMessagePtr = std::unique_ptr<sd_bus_message, SdBusRelease>;
using SdBusCredsPtr = std::unique_ptr<sd_bus_creds, SdBusRelease>;

/// One error of the bus: its name and its sentence.
class SdBusError {
  public:
    SdBusError() = default;
    ~SdBusError() { sd_bus_error_free(&error_); }
    SdBusError(const SdBusError&) = delete;
    SdBusError& operator=(const SdBusError&) = delete;

    /// Where a call leaves its error.
    sd_bus_error* out() noexcept { return &error_; }
    const sd_bus_error* get() const noexcept { return &error_; }

  private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

}  // namespace kestrav
