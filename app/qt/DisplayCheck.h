#pragma once

namespace kestrav {

/// While one exists, a toolkit that can't start for want of a display ends the process with one sentence on standard
/// error and status 1. Left to itself it would abort, with a core file, and blame its own installation.
class DisplayCheck {
  public:
    DisplayCheck();
    ~DisplayCheck();
    DisplayCheck(const DisplayCheck&) = delete;
    DisplayCheck& operator=(const DisplayCheck&) = delete;
};

}  // namespace kestrav
