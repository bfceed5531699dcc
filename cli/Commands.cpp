#include "cli/Commands.h"

#include <algorithm>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

#include "base/SystemLog.h"
#include "base/utf8.h"
#include "cli/LastEntryLog.h"
#include "cli/OrdinaryFile.h"
#include "cli/OutputFile.h"
#include "cli/TransferMeter.h"
#include "device/KestravDevice.h"
#include "device/imageSize.h"
#include "json/Writer.h"

namespace kestrav {
namespace {

constexpr std::int64_t kBlockSize = 512;
constexpr std::int64_t kFirmwareOffset = 1536 * kBlockSize;
constexpr std::int64_t kIconOffset = 2048 * kBlockSize;

// One read of the engine unmounts a drive, so an area is read back in few pieces: one, for any image of usual size.
constexpr std::int64_t kVerifyPiece = 64 << 20;

// The most that one write(2) moves on Linux; more would be cut short, which the engine counts as success.
constexpr std::int64_t kLargestWrite = 0x7ffff000;

// What detection stores as the disk's name when the accessory has none.
constexpr std::string_view kNoDisk = "nil";

void complain(const Console& console, std::string_view sentence) {
    console.err << "kestravctl: " << escapedForTerminal(sentence) << std::endl;
}

ExitCode refuse(const Console& console, std::string_view sentence) {
    complain(console, sentence);
    return ExitCode::wrongCall;
}

ExitCode codeOf(bool succeeded) {
    return succeeded ? ExitCode::success : ExitCode::failure;
}

std::string cannotBeReadToItsEnd(const OrdinaryFile& file) {
    return file.path() + " can't be read to its end. Copy it to a sound disk and try again.";
}

std::string partly(std::int64_t done, std::int64_t wanted, std::string_view what) {
    return "Only " + std::to_string(done) + " of " + std::to_string(wanted) + " bytes could be " + std::string(what) +
           ".";
}

void printJson(const Console& console, const Tree& tree) {
    console.out << dataWithJSONObject(tree) << std::endl;
}

void printDevice(const Console& console, const DeviceObject& device, bool json) {
    const bool hasDisk = device.bsdName != kNoDisk;
    if (json) {
        Tree object = Tree::map();
        object.setMember("found", Tree(true));
        object.setMember("name", Tree(device.name));
        object.setMember("disk", hasDisk ? Tree(device.bsdName) : Tree());
        object.setMember("id", Tree(device.id));
        printJson(console, object);
        return;
    }
    console.out << "name: " << escapedForTerminal(device.name) << "\ndisk: " << (hasDisk ? device.bsdName : "none")
                << "\nid: " << device.id << std::endl;
}

/// Carries out one kind of invocation after the other; one object serves one call.
class Performer {
  public:
    Performer(KestravDevice& device, const TransferMeter& meter, const LastEntryLog& answers, const Console& console)
        : device_(device),
          meter_(meter),
          answers_(answers),
          console_(console) {}

    ExitCode operator()(const DetectInvocation& detect) const {
        if (device_.detect(device_.vendorID(), device_.productID()) != 0) {
            complain(console_, "The device registry can't be reached. Is /sys mounted?");
            return ExitCode::registryUnreachable;
        }
        if (!device_.device.bsdName.empty()) {
            printDevice(console_, device_.device, detect.json);
            return ExitCode::success;
        }
        if (detect.json) {
            Tree object = Tree::map();
            object.setMember("found", Tree(false));
            printJson(console_, object);
        }
        complain(console_, "No accessory (USB 10d6:fd01) is attached. Plug it in and try again.");
        return ExitCode::noAccessory;
    }

    ExitCode operator()(const DrivesInvocation& drives) const {
        const std::vector<std::string> paths = device_.getDrives();
        if (drives.json) {
            Tree list = Tree::list();
            for (const std::string& path : paths)
                list.append(Tree(repairedUTF8(path)));
            printJson(console_, list);
        } else if (paths.empty()) {
            complain(console_, "No drive is mounted below /media or /run/media.");
        }
        return ExitCode::success;
    }

    ExitCode operator()(const UpdateInvocation& update) const {
        const auto opened = OrdinaryFile::open(update.file);
        if (const auto* sentence = std::get_if<std::string>(&opened)) return refuse(console_, *sentence);
        const auto& image = std::get<OrdinaryFile>(opened);
        if (!imageSize(image.path())) return refuse(console_, cannotBeReadToItsEnd(image));
        const bool firmware = update.kind == ImageKind::firmware;
        const bool handedOver = firmware ? device_.firmwareUpdate(image.path()) : device_.iconUpdate(image.path());
        if (!handedOver || !update.verify) return codeOf(handedOver);
        return verify(image, firmware ? kFirmwareOffset : kIconOffset);
    }

    ExitCode operator()(const PushInvocation& push) const {
        const auto opened = OrdinaryFile::open(push.file);
        if (const auto* sentence = std::get_if<std::string>(&opened)) return refuse(console_, *sentence);
        return codeOf(device_.pushDevice(push.firstBlock, std::get<OrdinaryFile>(opened).path()));
    }

    ExitCode operator()(const PullInvocation& pull) const {
        device_.pullDevice(pull.firstBlock, pull.count);
        // The result is always empty; what tells is whether there was a disk to ask for.
        return codeOf(!device_.device.bsdName.empty());
    }

    ExitCode operator()(const ReadInvocation& read) const {
        if (!read.output && ::isatty(STDOUT_FILENO) == 1) {
            return refuse(console_, "The bytes would upset the terminal. Name a file with -o, or redirect the output.");
        }
        std::vector<std::byte> bytes = device_.readDevice(read.offset, read.length);
        if (bytes.empty()) {
            complain(console_, "Nothing was read.");
            return ExitCode::failure;
        }
        if (meter_.lastRead() < read.length) {
            complain(console_, partly(meter_.lastRead(), read.length, "read"));
            bytes.resize(static_cast<std::size_t>(meter_.lastRead()));
        }
        if (read.output) {
            const auto sentence = writeWhole(*read.output, bytes);
            return sentence ? refuse(console_, *sentence) : ExitCode::success;
        }
        console_.out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return ExitCode::success;
    }

    ExitCode operator()(const WriteInvocation& write) const {
        const auto opened = OrdinaryFile::open(write.file);
        if (const auto* sentence = std::get_if<std::string>(&opened)) return refuse(console_, *sentence);
        const auto& file = std::get<OrdinaryFile>(opened);
        if (file.size() > kLargestWrite) {
            return refuse(console_, file.path() +
                                        " is larger than the 2147479552 bytes that one write can carry. "
                                        "Split it, or send it with 'kestravctl push'.");
        }
        const std::vector<std::byte> bytes = file.read(0, file.size());
        if (std::ssize(bytes) != file.size()) return refuse(console_, cannotBeReadToItsEnd(file));
        if (!device_.writeDevice(write.offset, file.size(), bytes)) {
            complain(console_, "Nothing was written.");
            return ExitCode::failure;
        }
        if (meter_.lastWritten() == file.size()) return ExitCode::success;
        complain(console_, partly(meter_.lastWritten(), file.size(), "written"));
        return ExitCode::failure;
    }

  private:
    ExitCode verify(const OrdinaryFile& image, std::int64_t areaOffset) const {
        // A disk shows from its own memory what it could not keep. Then only the service has heard the truth.
        if (answers_.last().starts_with("Failed: "))
            return verificationFailed("the service says that the write failed");
        for (std::int64_t done = 0; done < image.size(); done += kVerifyPiece) {
            const std::vector<std::byte> wanted = image.read(done, kVerifyPiece);
            const std::int64_t length = std::min(kVerifyPiece, image.size() - done);
            const std::vector<std::byte> found = device_.readDevice(areaOffset + done, length);
            if (found.empty() || meter_.lastRead() != length) return verificationFailed("the disk can't be read back");
            const auto [difference, end] = std::ranges::mismatch(found, wanted);
            if (difference == found.end() && end == wanted.end()) continue;
            return verificationFailed("the disk differs from the image at byte " +
                                      std::to_string(done + (difference - found.begin())) + " of it");
        }
        console_.out << "Verified: the " << image.size() << " bytes on the disk are those of the image." << std::endl;
        return ExitCode::success;
    }

    ExitCode verificationFailed(const std::string& reason) const {
        complain(console_,
                 "Verification failed: " + reason + ". Send the image again before you unplug the accessory.");
        return ExitCode::verificationFailed;
    }

    KestravDevice& device_;
    const TransferMeter& meter_;
    const LastEntryLog& answers_;
    const Console& console_;
};

}  // namespace

ExitCode carryOut(const Invocation& invocation, KestravDevice& device, const TransferMeter& meter,
                  const LastEntryLog& answers, const Console& console) {
    const ExitCode code = std::visit(Performer(device, meter, answers, console), invocation);
    if (console.out.flush()) return code;
    complain(console, "Standard output can't be written; what was printed is not complete.");
    return code == ExitCode::success ? ExitCode::wrongCall : code;
}

}  // namespace kestrav
