#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "base/StagedFile.h"
#include "base/UniqueFd.h"

namespace kestrav {

/// A file that bytes are written to piece by piece. It is there whole or not at all: they go to a temporary file beside
/// it, which takes its place when all is written. A device, pipe or terminal is written to as it is. Each problem's
/// sentence says what to do.
class OutputFile {
  public:
    /// Where it can't be made, that turns out here, before there is anything to write.
    static Outcome<OutputFile> open(const std::string& path);

    /// Appends the bytes.
    Outcome<void> write(std::span<const std::byte> bytes);

    /// What was written takes the file's place, and the rights of one that was there. Once, at the end.
    Outcome<void> finish();

  private:
    OutputFile(std::string path, UniqueFd inPlace, std::optional<StagedFile> staged, mode_t mode)
        : path_(std::move(path)),
          inPlace_(std::move(inPlace)),
          staged_(std::move(staged)),
          mode_(mode) {}
    static Outcome<OutputFile> beside(const std::string& path, const std::string& target, mode_t mode);

    std::string path_;
    UniqueFd inPlace_;
    std::optional<StagedFile> staged_;
    mode_t mode_;
};

}  // namespace kestrav
