#pragma once

#include <vector>

#include "cli/DoctorParts.h"
#include "cli/ExitCode.h"
#include "cli/Finding.h"
#include "cli/Invocation.h"

namespace kestrav {

/// Looks at whatever an update depends on, in the order in which an update does. Changes nothing; the service is asked
/// for something that it only can turn down.
std::vector<Finding> examine(const DoctorParts& parts);

/// Says what was found, one line each, or as one object. Success only if an update can work.
ExitCode examine(const DoctorInvocation& doctor, const DoctorParts& parts);

}  // namespace kestrav
