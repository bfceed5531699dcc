#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// Named texts that outlive the process, in one XML file. The file is on disk whole or not at all, also when the power
/// fails in the middle of saving. Nothing watches it: of two programs that save, the later one wins.
class PersistentStore {
  public:
    /// UTF-8 texts without NUL.
    using Records = std::map<std::string, std::string>;

    /// `modelName` tells whose data it is; a file with another one is refused.
    PersistentStore(std::filesystem::path file, std::string modelName);

    /// Reads the file, or makes it without any records when it is missing. A problem when it can't be read, is no plain
    /// file, is longer than 16 MiB or isn't such a store; its `cause` is one of the system's errors.
    Outcome<void> open();

    const std::filesystem::path& file() const { return file_; }
    const Records& records() const { return records_; }

    /// Replaces the records, on disk first. After a problem everything is as it was.
    Outcome<void> save(Records records);

  private:
    Outcome<void> take(const std::string& content);

    std::filesystem::path file_;
    std::string modelName_;
    Records records_;
};

}  // namespace kestrav
