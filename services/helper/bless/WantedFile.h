#pragma once

#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "base/StagedFile.h"

namespace kestrav {

/// A file as it should be: where, with which access, holding what. Belongs to root, in a folder that only root can
/// change. A problem's sentence is for the person who asked for the installation.
struct WantedFile {
    std::string folder;  ///< absolute
    std::string name;
    mode_t mode = 0644;
    std::string bytes;

    std::string path() const { return folder + "/" + name; }

    /// Whether the place already holds exactly this file; then there is nothing to put.
    Outcome<bool> isInPlace() const;

    /// The file, complete on the disk beside its place.
    Outcome<StagedFile> stage() const;

    /// Gives what stage() made its place, also on the disk.
    Outcome<void> putInPlace(StagedFile staged) const;

    /// Whether anything bears the name, or was left beside it by an installer that was killed.
    Outcome<bool> isThere() const;

    /// Takes away whatever bears the name, and what was left beside it. False when nothing did.
    Outcome<bool> remove() const;
};

}  // namespace kestrav
