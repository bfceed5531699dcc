#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "command/BoardEntry.h"

namespace kestrav {

/// Reads the board on which a command service says where a write is and how it ended: for progress, and for the outcome
/// of an exchange that brought no answer. docs/protocol.md describes it.
///
/// Only what root, or this process's own user, put there is believed: a folder and an ordinary file that no other can
/// change. Nothing is waited for, and no more than 4096 bytes are read.
class BoardReader {
  public:
    /// Looked into in that order.
    explicit BoardReader(std::vector<std::filesystem::path> folders = usualFolders());

    /// What is said of the disk, for example "sdb". Nothing where there is nothing, where it is another's, and where it
    /// is not of the version and the shape that are known. Members that are not known are passed over.
    std::optional<BoardEntry> read(std::string_view disk) const;

    /// Root's, then the own user's, for a service that runs as this user.
    static std::vector<std::filesystem::path> usualFolders();

  private:
    std::vector<std::filesystem::path> folders_;
};

}  // namespace kestrav
