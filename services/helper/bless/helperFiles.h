#pragma once

#include <string>
#include <vector>

#include "services/helper/bless/WantedFile.h"

namespace kestrav {

/// What makes the helper: first the program, then who may call it, how it is started, the names of the accessory's
/// disk, and last what lets the bus start it. `program` is the program's bytes.
std::vector<WantedFile> helperFiles(std::string program);

/// The action of polkit that is the right to reach the disk, where every polkit looks.
WantedFile rightFile();

/// The same for systems whose /usr can't be written to. polkit looks there since version 124.
constexpr int kPolkitThatReadsEtc = 124;
WantedFile rightFileBesideAnImage();

}  // namespace kestrav
