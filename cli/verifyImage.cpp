#include "cli/verifyImage.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "cli/OrdinaryFile.h"
#include "cli/ServiceAnswers.h"
#include "cli/TransferMeter.h"
#include "cli/complain.h"
#include "device/KestravDevice.h"

namespace kestrav {
namespace {

// One read of the engine unmounts a drive, so an area is read back in few pieces: one, for any image of usual size.
constexpr std::int64_t kVerifyPiece = 64 << 20;

ExitCode verificationFailed(const Console& console, const std::string& reason) {
    complain(console, "Verification failed: " + reason + ". Send the image again before you unplug the accessory.");
    return ExitCode::verificationFailed;
}

}  // namespace

ExitCode verifyImage(const OrdinaryFile& image, std::int64_t areaOffset, const CommandParts& parts) {
    const Console& console = parts.console;
    // A disk shows from its own memory what it could not keep. Then only the service has heard the truth.
    if (parts.answers.saidLastThatItFailed())
        return verificationFailed(console, "the service says that the write failed");
    for (std::int64_t done = 0; done < image.size(); done += kVerifyPiece) {
        const std::vector<std::byte> wanted = image.read(done, kVerifyPiece);
        const std::int64_t length = std::min(kVerifyPiece, image.size() - done);
        const std::vector<std::byte> found = parts.device.readDevice(areaOffset + done, length);
        if (found.empty() || parts.meter.lastRead() != length)
            return verificationFailed(console, "the disk can't be read back");
        const auto [difference, end] = std::ranges::mismatch(found, wanted);
        if (difference == found.end() && end == wanted.end()) continue;
        return verificationFailed(console, "the disk differs from the image at byte " +
                                               std::to_string(done + (difference - found.begin())) + " of it");
    }
    console.out << "Verified: the " << image.size() << " bytes on the disk are those of the image." << std::endl;
    return ExitCode::success;
}

}  // namespace kestrav
