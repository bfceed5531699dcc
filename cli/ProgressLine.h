#pragma once

#include <mutex>
#include <string_view>

namespace kestrav {

/// One line of a terminal that is shown again and again in the place of the one before. May be used from several
/// threads at once.
class ProgressLine {
  public:
    /// `terminal` is a descriptor, not owned, that outlives this object.
    explicit ProgressLine(int terminal) : terminal_(terminal) {}
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// ASCII without control characters. What the terminal has no room for is left out, since a line that is broken in
    /// two can't be taken back.
    void show(std::string_view line);
    /// Leaves an empty line for what others say.
    void clear();

  private:
    int terminal_;
    std::mutex mutex_;
    bool isShown_ = false;
};

}  // namespace kestrav
