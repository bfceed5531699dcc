#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "services/privileged/Outcome.h"

namespace kestrav {

/// The user on whose behalf something is done, with the rights that files are opened with.
struct Caller {
    uid_t uid;
    gid_t gid;
    std::vector<gid_t> groups;  ///< supplementary
};

/// The user with this id and the groups that the user database gives it; for the service's own user the groups that
/// the service itself has. Refused when the user is not known.
Outcome<Caller> callerWithUid(uid_t uid);

}  // namespace kestrav
