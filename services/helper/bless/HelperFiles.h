#pragma once

#include <string>
#include <vector>

#include "services/helper/bless/StagedFile.h"

namespace kestrav {

/// Where the helper's program stands once it is installed, and under which name.
constexpr const char* kHelperProgramFolder = "/usr/local/libexec";
constexpr const char* kHelperProgramName = "com.corvatel.KestravHelper";

/// What makes the helper: first the program, then who may call it, how it is started, the names of the accessory's
/// disk, and last what lets the bus start it. `program` is the program's bytes.
std::vector<WantedFile> helperFiles(std::string program);

/// The action of polkit that is the right to reach the disk.
WantedFile rightFile();

}  // namespace kestrav
