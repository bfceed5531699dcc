#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <variant>

#include "cli/AccessoryChoice.h"
#include "cli/ExitCode.h"
#include "cli/FleetOptions.h"
#include "cli/HelperInvocation.h"
#include "cli/SendOptions.h"

namespace kestrav {

/// What one call of kestravctl asks for, one record a command. Numbers are not negative; paths are as typed.
struct DetectInvocation {
    bool json = false;
    AccessoryChoice accessory{};
};
struct ListInvocation {
    bool json = false;
};
struct DrivesInvocation {
    bool json = false;
};
struct DoctorInvocation {
    bool json = false;
};
enum class ImageKind { firmware, icon };
struct UpdateInvocation {
    ImageKind kind = ImageKind::firmware;
    std::string file;
    SendOptions options = {};
    AccessoryChoice accessory = {};
    FleetOptions fleet = {};
};
struct PushInvocation {
    std::int64_t firstBlock = 0;  ///< 512-byte blocks
    std::string file;
    SendOptions options = {};
    AccessoryChoice accessory = {};
    FleetOptions fleet = {};
};
struct PullInvocation {
    std::int64_t firstBlock = 0;          ///< 512-byte blocks
    std::int64_t count = 0;               ///< 512-byte blocks
    std::optional<std::string> output{};  ///< absent: standard output
    AccessoryChoice accessory{};
};
struct SaveInvocation {
    ImageKind kind = ImageKind::firmware;
    std::string file;
    std::optional<std::int64_t> bytes{};  ///< absent: the whole area; an icon's has no end
    AccessoryChoice accessory{};
};
struct ReadInvocation {
    std::int64_t offset = 0;            ///< bytes
    std::int64_t length = 0;            ///< bytes
    std::optional<std::string> output;  ///< absent: standard output
    AccessoryChoice accessory{};
};
struct WriteInvocation {
    std::int64_t offset = 0;  ///< bytes
    std::string file;
    AccessoryChoice accessory{};
};

using Invocation = std::variant<DetectInvocation, ListInvocation, DrivesInvocation, UpdateInvocation, PushInvocation,
                                PullInvocation, SaveInvocation, ReadInvocation, WriteInvocation>;

/// Reads the command line. When there is nothing to carry out (help, version, a wrong call) says so on `out` or `err`
/// and returns the status to end with. A wrong call with `--json` in it gets its object on `out`.
std::variant<Invocation, HelperInvocation, DoctorInvocation, ExitCode> parseCommandLine(int argc,
                                                                                        const char* const* argv,
                                                                                        std::ostream& out,
                                                                                        std::ostream& err);

/// What the invocation says about sending an image; null when it sends none.
const SendOptions* sendOptionsOf(const Invocation& invocation);

/// Whether it sends an image to several accessories, side by side.
bool isForAll(const Invocation& invocation);

/// Whether an output that was asked for is standard output: none was named, or "-" was.
inline bool isStandardOutput(const std::optional<std::string>& output) {
    return !output || *output == "-";
}

/// Which accessory the invocation is about; empty for those that are about none or all.
AccessoryChoice choiceOf(const Invocation& invocation);

/// Whether the invocation puts data on standard output, so that nothing else may go there.
bool putsDataOnStandardOutput(const Invocation& invocation);

}  // namespace kestrav
