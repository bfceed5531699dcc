#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/SystemLog.h"

namespace kestrav {

/// Keeps what was logged.
class RecordingLog final : public SystemLog {
  public:
    void write(std::string_view entry) override { entries.emplace_back(entry); }

    std::vector<std::string> entries;
};

}  // namespace kestrav
