#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "base/Outcome.h"

namespace kestrav {

/// The rights of a user that files are opened with.
struct UserRights {
    uid_t uid;
    gid_t gid;
    std::vector<gid_t> groups;  ///< supplementary
};

/// The rights of the user with this id, with the groups that the user database gives it; for the service's own user the
/// groups that the service itself has. Refused when the user is not known.
Outcome<UserRights> rightsOf(uid_t uid);

}  // namespace kestrav
