#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace kestrav {

/// Whose service is at the other end of a connection within this computer. While the real one is off, any user may
/// listen on its port and answer in its words.
///
/// It is ours when it is root's, or, for a developer who runs it as themselves, the user's own; never the user's own
/// when that is root, which is the first case.
class ServiceOwner {
  public:
    /// Looks at once at who listens there. `connection`, not owned, has just been made and outlives this object.
    explicit ServiceOwner(int connection);

    /// Why an answer that has come over the connection is not the service's, in a sentence; nothing when it is. Looks
    /// at the other end itself, too, if it is still there.
    std::optional<std::string> whyNotOurs() const;

  private:
    int connection_;
    std::optional<uid_t> listener_;
};

}  // namespace kestrav
