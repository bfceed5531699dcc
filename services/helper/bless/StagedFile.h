#pragma once

#include <string>
#include <sys/types.h>

#include "base/UniqueFd.h"

namespace kestrav {

/// A file as it should be: where, with which access, holding what.
struct WantedFile {
    std::string folder;  ///< absolute
    std::string name;
    mode_t mode = 0644;
    std::string bytes;

    std::string path() const { return folder + "/" + name; }
};

/// A file that is written and synced under a temporary name beside its place and waits to be put there. Belongs to
/// root. The temporary file goes away with this object unless it was put in place. Raises `InstallError`.
class StagedFile {
  public:
    explicit StagedFile(const WantedFile& wanted);
    ~StagedFile();
    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&&) = delete;

    /// Takes the place of whatever bears the name, in one step: nobody ever sees half of it.
    void putInPlace();

    /// Whether the place already holds exactly the wanted file; then there is nothing to put.
    static bool isInPlace(const WantedFile& wanted);

    /// Takes the file away. False when there was none.
    static bool remove(const std::string& folder, const std::string& name);

  private:
    void write(const WantedFile& wanted);

    UniqueFd folder_;
    std::string name_;
    std::string temporaryName_;  ///< empty when there is nothing to clear away
    std::string path_;
};

}  // namespace kestrav
