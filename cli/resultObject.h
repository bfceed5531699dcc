#pragma once

#include "cli/UpdateResult.h"
#include "json/tree/Tree.h"

namespace kestrav {

/// The result as the object that `--json` prints: always the same members, null for what is not known or not there.
/// docs/kestravctl.schema.json describes it.
Tree resultObject(const UpdateResult& result);

}  // namespace kestrav
