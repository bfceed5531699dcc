#pragma once

#include <optional>

#include "cli/CommandParts.h"
#include "cli/SendOptions.h"
#include "cli/UpdateResult.h"

namespace kestrav {

class OrdinaryFile;

/// Everything that is done before an image is handed over: its checksum, what is strange about one that is going to be
/// a firmware or an icon (`isAnUpdate`), and, when nothing is to be written at all, whether it could be. The end, if it
/// ends here.
std::optional<UpdateResult> lookBeforeSending(const OrdinaryFile& image, const UpdateResult& asked, bool isAnUpdate,
                                              const SendOptions& options, const CommandParts& parts);

}  // namespace kestrav
