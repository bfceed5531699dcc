#include "cli/moveBytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <unistd.h>
#include <vector>

#include "cli/ChosenDevices.h"
#include "cli/OrdinaryFile.h"
#include "cli/TransferMeter.h"
#include "cli/complain.h"
#include "cli/writeOutputFile.h"
#include "device/KestravDevice.h"

namespace kestrav {
namespace {

// The most that one write(2) moves on Linux; more would be cut short, which the engine counts as success.
constexpr std::int64_t kLargestWrite = 0x7ffff000;

std::string partly(std::int64_t done, std::int64_t wanted, std::string_view what) {
    return "Only " + std::to_string(done) + " of " + std::to_string(wanted) + " bytes could be " + std::string(what) +
           ".";
}

/// Looks for the accessory; says why where there is none, and returns the status to end with.
std::optional<ExitCode> whyNoAccessory(const CommandParts& parts) {
    KestravDevice& device = parts.device;
    if (device.detect(device.vendorID(), device.productID()) != 0) {
        complain(parts.console, "The device registry can't be reached. Is /sys mounted?");
        return ExitCode::registryUnreachable;
    }
    if (parts.chosen.taken()) return std::nullopt;
    complain(parts.console, parts.chosen.whyNone() + " " + parts.chosen.remedyForNone());
    return ExitCode::failure;
}

/// The engine takes memory for all that it is asked for, so it is not asked for what lies behind the disk's end.
std::int64_t lengthOnDisk(const ReadInvocation& read, const UsbDevice& device) {
    if (!device.diskBytes || *device.diskBytes > INT64_MAX) return read.length;
    return std::clamp<std::int64_t>(static_cast<std::int64_t>(*device.diskBytes) - read.offset, 0, read.length);
}

}  // namespace

ExitCode moveBytes(const ReadInvocation& read, const CommandParts& parts) {
    const Console& console = parts.console;
    if (!read.output && ::isatty(STDOUT_FILENO) == 1) {
        return wrongCall(console, "The bytes would upset the terminal. Name a file with -o, or redirect the output.");
    }
    if (const auto end = whyNoAccessory(parts)) return *end;
    std::vector<std::byte> bytes = parts.device.readDevice(read.offset, lengthOnDisk(read, *parts.chosen.taken()));
    if (bytes.empty()) {
        complain(console, "Nothing was read.");
        return ExitCode::failure;
    }
    if (parts.meter.lastRead() < read.length) {
        complain(console, partly(parts.meter.lastRead(), read.length, "read"));
        bytes.resize(static_cast<std::size_t>(parts.meter.lastRead()));
    }
    if (!isStandardOutput(read.output)) {
        const auto written = writeOutputFile(*read.output, bytes);
        return written ? ExitCode::success : wrongCall(console, written.problem().sentence);
    }
    console.out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return ExitCode::success;
}

ExitCode moveBytes(const WriteInvocation& write, const CommandParts& parts) {
    const Console& console = parts.console;
    const auto opened = OrdinaryFile::open(write.file);
    if (!opened) return wrongCall(console, opened.problem().sentence);
    const auto& file = opened.value();
    if (file.size() > kLargestWrite) {
        return wrongCall(console, file.path() +
                                      " is larger than the 2147479552 bytes that one write can carry. "
                                      "Split it, or send it with 'kestravctl push'.");
    }
    const std::vector<std::byte> bytes = file.read(0, file.size());
    if (std::ssize(bytes) != file.size()) return wrongCall(console, cannotBeReadToItsEnd(file));
    if (const auto end = whyNoAccessory(parts)) return *end;
    if (!parts.device.writeDevice(write.offset, file.size(), bytes)) {
        complain(console, "Nothing was written.");
        return ExitCode::failure;
    }
    if (parts.meter.lastWritten() == file.size()) return ExitCode::success;
    complain(console, partly(parts.meter.lastWritten(), file.size(), "written"));
    return ExitCode::failure;
}

}  // namespace kestrav
