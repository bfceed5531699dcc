#pragma once

#include <map>
#include <mutex>
#include <utility>

#include "device/DeviceRegistry.h"

namespace kestrav {

/// A registry of devices that a test plugs in, on any thread.
class FakeRegistry final : public DeviceRegistry {
  public:
    static constexpr std::int64_t kVendor = 4310;
    static constexpr std::int64_t kProduct = 64769;

    void plugIn(UsbDevice device, std::int64_t ofVendor = kVendor, std::int64_t ofProduct = kProduct) {
        const std::lock_guard lock(mutex_);
        devices_[{ofVendor, ofProduct}].push_back(std::move(device));
    }
    void unplugAll() {
        const std::lock_guard lock(mutex_);
        devices_.clear();
    }

    /// What is said from now on in place of the devices that are plugged in.
    void answerWith(RegistryAnswer answer) {
        const std::lock_guard lock(mutex_);
        answer_ = std::move(answer);
    }
    void breakDown() { answerWith({.status = 5, .devices = std::nullopt}); }

    RegistryAnswer usbDevices(std::int64_t ofVendor, std::int64_t ofProduct) override {
        const std::lock_guard lock(mutex_);
        if (answer_) return *answer_;
        const auto found = devices_.find({ofVendor, ofProduct});
        return {.status = 0, .devices = found == devices_.end() ? std::vector<UsbDevice>() : found->second};
    }

  private:
    std::mutex mutex_;
    std::map<std::pair<std::int64_t, std::int64_t>, std::vector<UsbDevice>> devices_;
    std::optional<RegistryAnswer> answer_;
};

}  // namespace kestrav
