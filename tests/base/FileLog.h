#pragma once

#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "base/SystemLog.h"

namespace kestrav {

/// What RecordingLog is within one process: a system log that keeps its entries, here as lines of a file, for another
/// process to read. May be made to fail, in the process that has made it and not in those that it forks.
class FileLog final : public SystemLog {
  public:
    using Condition = std::function<bool(std::string_view entry)>;

    explicit FileLog(
        std::string path, Condition fails = [](std::string_view) { return false; })
        : path_(std::move(path)),
          fails_(std::move(fails)) {}

    void write(std::string_view entry) override {
        if (::getpid() == maker_ && fails_(entry)) throw std::runtime_error("no room for the entry");
        std::ofstream(path_, std::ios::app) << entry << '\n';
    }

  private:
    std::string path_;
    Condition fails_;
    pid_t maker_ = ::getpid();
};

}  // namespace kestrav
