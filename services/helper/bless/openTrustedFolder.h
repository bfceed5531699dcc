#pragma once

#include <string>

#include "base/Outcome.h"
#include "base/UniqueFd.h"

namespace kestrav {

enum class IfMissing {
    create,     ///< makes what is missing, root's and writable by root alone
    giveUp,     ///< fails
    doWithout,  ///< answers with an empty owner
};

/// Opens the folder at `path` (absolute, without "." and ".." and double slashes) one step at a time. Each step has to
/// be a folder, not a link (but /usr/local may be one of root's, and then what it leads to is judged), that belongs to
/// root and that root alone can write to: then nobody but root can exchange what is put there. Refused where it is not
/// so.
Outcome<UniqueFd> openTrustedFolder(const std::string& path, IfMissing ifMissing);

/// Reads the whole file `name` in `folder`, which only root may be able to change. `path` is for the
/// sentence of a problem.
Outcome<std::string> readTrustedFile(const UniqueFd& folder, const std::string& name, const std::string& path);

}  // namespace kestrav
