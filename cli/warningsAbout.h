#pragma once

#include <string>
#include <vector>

#include "cli/UpdateResult.h"

namespace kestrav {

class OrdinaryFile;

/// What is strange about an image that is going to be a firmware or an icon, one sentence each. It may be right all the
/// same: nothing here keeps it from being sent.
std::vector<std::string> warningsAbout(const OrdinaryFile& image, const UpdateResult& asked);

}  // namespace kestrav
