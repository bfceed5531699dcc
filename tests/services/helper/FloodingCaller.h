#pragma once

#include <cstddef>
#include <string>

#include "base/UniqueFd.h"

namespace kestrav {

/// A program that sends the helper more than it may, with a connection to the system bus of its own that speaks the
/// bus's protocol by hand: no library puts a message of this size together fast enough.
class FloodingCaller {
  public:
    /// Connects as the user of this process. Throws std::runtime_error.
    FloodingCaller();

    /// One call of runWithCmd with so many empty arguments, as bytes.
    static std::string callWithEmptyArguments(std::size_t count);

    /// Sends a call whole; false when the bus has closed the connection. What the bus sends is read and forgotten.
    bool send(const std::string& call) const;

  private:
    UniqueFd socket_;
};

}  // namespace kestrav
