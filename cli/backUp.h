#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/CommandParts.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// What was kept before an update, or why the update must not be begun.
struct Backup {
    std::string path;                      ///< of the file; empty when there was nothing to keep
    std::optional<UpdateResult> end = {};  ///< of an update that must not be begun

    /// The update's end, with a sentence about the file.
    UpdateResult addedTo(UpdateResult result) const;
};

/// Keeps what stands where `asked.bytes` bytes are going to be written, in a new file of `folder`: sending that file
/// takes the update back. Of the firmware's area all is kept. The file is named by area, serial number and time, for
/// example "firmware-KA0017-20261122T031500Z.fds". Without a folder nothing is kept.
Backup backUp(const std::optional<std::string>& folder, const UpdateResult& asked, const CommandParts& parts);

}  // namespace kestrav
