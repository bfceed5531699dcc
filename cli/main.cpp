#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <variant>

#include "base/QuietSystemLog.h"
#include "base/SystemLog.h"
#include "base/openStandardDescriptors.h"
#include "cli/Backends.h"
#include "cli/Interruption.h"
#include "cli/Invocation.h"
#include "cli/LogBesideProgress.h"
#include "cli/ProgressLine.h"
#include "cli/WatchedEngine.h"
#include "cli/carryOut.h"
#include "cli/carryOutHelper.h"
#include "cli/examine.h"
#include "cli/interruptedResult.h"
#include "cli/progressObject.h"
#include "cli/progressWords.h"
#include "cli/tellResult.h"
#include "command/HelperInstallation.h"
#include "command/linux/HelperPresence.h"
#include "command/linux/PolkitAuthorization.h"
#include "command/linux/SdBusHelperChannel.h"
#include "command/linux/TextAgent.h"
#include "command/linux/consentTakesAPrompt.h"
#include "device/KestravDevice.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "device/linux/UdevDeviceRegistry.h"
#include "outcome/WriteWatch.h"
#include "protocol/names.h"

namespace {

/// Whether the command service will be asked for something, which may take an administrator's password.
bool asksTheService(const kestrav::Invocation& invocation) {
    using namespace kestrav;
    return std::holds_alternative<UpdateInvocation>(invocation) || std::holds_alternative<PushInvocation>(invocation) ||
           std::holds_alternative<PullInvocation>(invocation) || std::holds_alternative<SaveInvocation>(invocation);
}

/// Whether an end in the middle would leave something half done, such as a disk that is unmounted and not written.
bool changesTheDisk(const kestrav::Invocation& invocation) {
    using namespace kestrav;
    return sendOptionsOf(invocation) != nullptr || std::holds_alternative<WriteInvocation>(invocation);
}

/// From now on a line that nobody reads any more is lost, and the process goes on: `kestravctl ... 2>&1 | head -1`.
/// Where data are printed it rather ends, as other programs do.
void outliveWhoeverReads() {
    std::signal(SIGPIPE, SIG_IGN);
}

kestrav::HelperState helperState() {
    using namespace kestrav;
    const auto presence = helperPresence(kSystemBusAddress, std::string(kHelperLabel));
    if (!presence) return HelperState::unknown;
    if (presence->owned) return HelperState::running;
    return presence->startable ? HelperState::installed : HelperState::notInstalled;
}

int perform(const kestrav::HelperInvocation& invocation) {
    using namespace kestrav;
    std::optional<TextAgent> agent;
    if (invocation.operation != HelperInvocation::Operation::status) agent.emplace();
    SyslogSystemLog systemLog("kestravctl");
    PolkitAuthorization authorization(KESTRAV_LIBEXEC "/kestrav-bless");
    SdBusHelperChannel channel;
    QuietSystemLog quietLog;
    const HelperParts parts{authorization, channel, systemLog, quietLog, [&] { return authorization.uninstall(); },
                            helperState};
    return static_cast<int>(carryOutHelper(invocation, parts, {std::cout, std::cerr}));
}

std::optional<int> terminalOfErrors() {
    return ::isatty(STDERR_FILENO) != 0 ? std::optional(STDERR_FILENO) : std::nullopt;
}

/// Where the progress of a write is shown, if anywhere.
kestrav::WriteWatch::Show showFor(const kestrav::SendOptions* options, kestrav::ProgressLine& line) {
    using namespace kestrav;
    if (options == nullptr) return {};
    if (options->progress) return [](const WriteState& state) { std::cout << progressObject(state) << std::endl; };
    if (options->quiet || !terminalOfErrors()) return {};
    return [&line](const WriteState& state) {
        const std::string words = progressWords(state);
        words.empty() ? line.clear() : line.show(words);
    };
}

int perform(const kestrav::DoctorInvocation& invocation) {
    using namespace kestrav;
    // The service's answer is for the examination alone.
    SyslogSystemLog systemLog("kestravctl");
    QuietSystemLog quietLog;
    ServiceAnswers answers;
    CommandService service(quietLog, {.connectSeconds = 5, .readSeconds = 5}, &answers);
    UdevDeviceRegistry udev;
    WatchedRegistry registry(udev);
    MountinfoVolumes volumes;
    PosixDiskCalls diskCalls;
    KestravDevice device(registry, volumes, diskCalls, service, std::cerr);
    const auto busHas = [](const std::string& name) {
        const auto presence = helperPresence(kSystemBusAddress, name);
        return presence && (presence->owned || presence->startable);
    };
    return static_cast<int>(examine(invocation, {device,
                                                 registry,
                                                 service,
                                                 answers,
                                                 busHas,
                                                 KESTRAV_LIBEXEC "/kestrav-commandd",
                                                 KESTRAV_LIBEXEC "/kestrav-helper",
                                                 std::filesystem::path(kHelperProgramFolder) / kHelperLabel,
                                                 {std::cout, std::cerr}}));
}

int perform(const kestrav::Invocation& invocation) {
    using namespace kestrav;
    const Console console{std::cout, std::cerr, terminalOfErrors()};
    std::ostream& progress = putsDataOnStandardOutput(invocation) ? std::cerr : std::cout;
    const SendOptions* options = sendOptionsOf(invocation);
    const bool noPrompt = options != nullptr && options->noPrompt;
    if (noPrompt && consentTakesAPrompt()) {
        return static_cast<int>(tellResult(
            UpdateResult().endedWith(
                ExitCode::failure, "An administrator would have to be asked for a password, and nobody is to be asked.",
                "Run it as root, or have a rule allow it: see kestrav-commandd(8)."),
            options->json, console));
    }
    std::optional<TextAgent> agent;
    if (asksTheService(invocation) && !noPrompt) agent.emplace();
    if (changesTheDisk(invocation)) outliveWhoeverReads();
    const bool quiet = options != nullptr && options->quiet;
    SyslogSystemLog systemLog("kestravctl");
    QuietSystemLog quietLog;
    ProgressLine line(STDERR_FILENO);
    LogBesideProgress log(quiet ? static_cast<SystemLog&>(quietLog) : systemLog, line);
    UdevDeviceRegistry registry;
    MountinfoVolumes volumes;
    PosixDiskCalls disks;
    const Backends backends{registry, volumes, disks, log};
    std::ostream nowhere(nullptr);
    WatchedEngine engine(backends, choiceOf(invocation), console, quiet ? nowhere : progress, showFor(options, line));
    const CommandParts parts = engine.parts();
    std::optional<Interruption> interruption;
    // Of several accessories at once those know it who write to them.
    if (options != nullptr && !isForAll(invocation)) {
        interruption.emplace([&] {
            const auto state = parts.watch.state();
            line.clear();
            if (state) tellResult(interruptedResult(*state), options->json, console);
        });
    }
    return static_cast<int>(carryOut(invocation, parts));
}

}  // namespace

int main(int argc, char** argv) {
    using namespace kestrav;
    if (!openStandardDescriptors()) return static_cast<int>(ExitCode::wrongCall);
    const auto parsed = parseCommandLine(argc, argv, std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) {
        return static_cast<int>(std::cout.flush() ? *code : ExitCode::wrongCall);
    }
    try {
        if (const auto* helper = std::get_if<HelperInvocation>(&parsed)) return perform(*helper);
        if (const auto* doctor = std::get_if<DoctorInvocation>(&parsed)) return perform(*doctor);
        return perform(std::get<Invocation>(parsed));
    } catch (const std::bad_alloc&) {
        const auto end = UpdateResult().endedWith(
            ExitCode::wrongCall, "There is not enough memory for that. Take a smaller piece at a time.");
        const bool json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
        return static_cast<int>(tellResult(end, json, {std::cout, std::cerr}));
    }
}
