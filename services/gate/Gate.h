#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "services/asker/ConsentSubject.h"
#include "services/disk/BlockDevices.h"
#include "services/disk/MountTable.h"
#include "services/gate/GateAnswer.h"
#include "services/gate/PrivilegedRequest.h"
#include "services/image/ImageFile.h"
#include "services/image/ImageReader.h"
#include "services/image/PlacesInMemory.h"
#include "services/image/UserRights.h"

namespace kestrav {

struct AccessoryNode;
class Asker;
class BoardNote;
class Consent;
class ImageBytes;
class RequestLog;

/// The one way to anything that is done with root's rights: every command line of every service passes it.
///
/// It serves nobody without consent but root and the service's own user, and trusts nothing in the command line. The
/// disk must be the accessory's, the image is opened with the rights of the one who asks, and what is written is read
/// back.
class Gate {
  public:
    /// Nothing is owned; all outlive this object. `board` is the folder where it says how far a write is; without one
    /// it doesn't.
    Gate(Consent& consent, const BlockDevices& devices, const MountTable& mounts, RequestLog& log,
         std::filesystem::path board = {}, ImagePatience patience = {})
        : consent_(consent),
          devices_(devices),
          mounts_(mounts),
          log_(log),
          board_(std::move(board)),
          patience_(patience) {}

    /// Refused when that user's requests need not even be read. Answers at once.
    Outcome<void> admit(uid_t uid) const;

    /// Obtains consent where the asker needs it, carries the command line out and tells what came of it, in never more
    /// than 10239 bytes. Nobody is asked for consent to something that is refused anyway. Writes one line to the log of
    /// what it answers.
    /// Blocks until the work is done; may fork; use it from a process with one thread. Nothing is kept between calls.
    GateAnswer perform(Asker& asker, std::string_view command, std::span<const std::string> arguments);

  private:
    Outcome<std::optional<ImageFile>> imageOf(const PrivilegedRequest& request, const UserRights& rights) const;
    BoardNote noteFor(uid_t uid, const Outcome<ConsentSubject>& subject, const PrivilegedRequest& request) const;
    std::string answer(const UserRights& rights, const Outcome<PrivilegedRequest>& request,
                       std::optional<ImageFile>& image, const std::string& who, BoardNote& note);
    Outcome<std::string> carryOut(const UserRights& rights, const PrivilegedRequest& request,
                                  std::optional<ImageFile>& image, BoardNote& note) const;
    Outcome<std::string> unmount(const UnmountRequest& request) const;
    Outcome<std::string> write(const WriteRequest& request, const UserRights& rights,
                               std::optional<ImageFile>& agreedTo, BoardNote& note) const;
    Outcome<std::string> writeTo(const AccessoryNode& node, std::uint64_t firstBlock, const ImageBytes& image,
                                 BoardNote& note) const;
    Outcome<std::string> read(const ReadRequest& request) const;

    Consent& consent_;
    const BlockDevices& devices_;
    const MountTable& mounts_;
    RequestLog& log_;
    std::filesystem::path board_;
    ImagePatience patience_;
    PlacesInMemory places_;
};

}  // namespace kestrav
