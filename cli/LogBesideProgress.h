#pragma once

#include "base/SystemLog.h"
#include "cli/ProgressLine.h"

namespace kestrav {

/// The log of another object, whose copy on standard error begins on an empty line.
class LogBesideProgress final : public SystemLog {
  public:
    /// Neither is owned; both outlive this object.
    LogBesideProgress(SystemLog& log, ProgressLine& line) : log_(log), line_(line) {}

    void write(std::string_view entry) override {
        line_.clear();
        log_.write(entry);
    }

  private:
    SystemLog& log_;
    ProgressLine& line_;
};

}  // namespace kestrav
