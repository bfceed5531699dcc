#pragma once

#include <string_view>

namespace kestrav {

/// Whoever receives the engine's progress lines: the window's controller, a terminal, a test.
class LogSink {
  public:
    virtual ~LogSink() = default;

    /// Takes one line, without a line end; an empty line is a line. Called on the engine's thread, in order.
    virtual void log(std::string_view line) = 0;
};

}  // namespace kestrav
