#pragma once

#include <string>
#include <string_view>

#include "base/SystemLog.h"

namespace kestrav {

/// Passes everything on and remembers the last entry. After an update that is the service's answer to the write, or why
/// there is none: the engine learns neither. For one thread.
class LastEntryLog final : public SystemLog {
  public:
    /// `log` is not owned and outlives this object.
    explicit LastEntryLog(SystemLog& log) : log_(log) {}

    void write(std::string_view entry) override {
        log_.write(entry);
        last_ = entry;
    }

    const std::string& last() const { return last_; }

  private:
    SystemLog& log_;
    std::string last_;
};

}  // namespace kestrav
