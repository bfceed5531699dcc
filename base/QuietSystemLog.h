#pragma once

#include "base/SystemLog.h"

namespace kestrav {

/// The system's log alone, without a copy on standard error: for what a person need not read who sees the outcome
/// already. Needs the process's SyslogSystemLog to live, which names the program.
class QuietSystemLog final : public SystemLog {
  public:
    void write(std::string_view entry) override;
};

}  // namespace kestrav
