#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/SystemLog.h"

namespace kestrav {

/// A system log that keeps its entries. May be written to from several threads.
class RecordedLog final : public SystemLog {
  public:
    void write(std::string_view entry) override {
        const std::lock_guard lock(mutex_);
        entries_.emplace_back(entry);
    }
    std::vector<std::string> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> entries_;
};

}  // namespace kestrav
