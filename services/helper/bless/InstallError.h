#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>

namespace kestrav {

/// Why the installer gave up. `what()` is one sentence for the person who asked, without a line end.
class InstallError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The sentence "WHAT: the system's words for `error`."
InstallError systemFailure(const std::string& what, int error = errno);

}  // namespace kestrav
