#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "base/UniqueFd.h"

namespace kestrav {

/// Rights of a file that its owner reads and writes, and nobody else.
inline constexpr mode_t kOwnerAlone = 0600;

/// A new file that is made complete under a name of its own and then takes its place in one step, so that nobody ever
/// sees half of it. It goes away with this object unless it was put in place. Movable; one thread at a time. Each
/// problem's `cause` is the system's error, and its sentence the system's words.
class StagedFile {
  public:
    /// For the place `file`, beside it, under a hidden name that nothing has.
    static Outcome<StagedFile> beside(const std::filesystem::path& file);

    /// For the place `name` in an opened folder, as ".NAME.new": one that an earlier program left there, having been
    /// killed, is removed. Whatever goes by the ends of names does not take it for a complete file.
    static Outcome<StagedFile> in(UniqueFd folder, const std::string& name);
    /// The name that in() gives the file until it takes the place `name`.
    static std::string temporaryName(const std::string& name) { return "." + name + ".new"; }

    /// Takes the file over from `other`.
    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&&) = delete;
    ~StagedFile();

    /// Writes `bytes`, gives the file its rights and brings it to the disk. Once.
    Outcome<void> fill(std::span<const std::byte> bytes, mode_t mode);

    /// Takes the place of whatever bears the name. That the name has changed is not on the disk yet.
    Outcome<void> putInPlace();

    /// Open for writing until fill() is done; stays this object's.
    int descriptor() const { return file_.get(); }
    /// The folder that in() was given.
    const UniqueFd& folder() const { return folder_; }

  private:
    StagedFile(UniqueFd folder, UniqueFd file, std::string temporaryName, std::string name);
    int base() const;

    UniqueFd folder_;  ///< none when the names are whole paths
    UniqueFd file_;
    std::string temporaryName_;  ///< empty when there is nothing to clear away
    std::string name_;
};

}  // namespace kestrav
