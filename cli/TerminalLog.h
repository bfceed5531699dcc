#pragma once

#include <ostream>

#include "base/shownText.h"
#include "device/LogSink.h"

namespace kestrav {

/// Shows the engine's progress, one line each, at once. Characters that mislead are escaped: a line can hold a volume's
/// name, which comes from whoever formatted the volume.
class TerminalLog final : public LogSink {
  public:
    /// `stream` is not owned and outlives this object.
    explicit TerminalLog(std::ostream& stream) : stream_(stream) {}

    void log(std::string_view line) override { stream_ << escapedForTerminal(line) << std::endl; }

  private:
    std::ostream& stream_;
};

}  // namespace kestrav
