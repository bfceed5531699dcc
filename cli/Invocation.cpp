#include "cli/Invocation.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <functional>
#include <memory>
#include <ostream>

#include "cli/NarrowHelp.h"
#include "cli/compareDigest.h"
#include "cli/tellResult.h"
#include "cli/wrongCallSentence.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

constexpr const char* kFooter = R"(Exit status:
  0  done; firmware, icon, push: the service has read the image back, and it is
     equal; pull: the blocks came
  1  no accessory, or nothing was handed over; read, write: nothing was moved;
     doctor: an update can't work
  2  wrong call, or a file that can't be read or written
  3  detect: no accessory is attached
  4  the service refused or failed, or the disk differs from the image
  5  the device registry can't be reached
  6  nobody knows: no answer, half of one, or one that is not the service's
  130  ended by Ctrl-C; what the service had begun goes on

The last line says it in words, and what to do next. Progress goes to standard
output, or to standard error when data goes there; what the service answers
goes to the system log and to standard error.

Before read and write touch the disk they unmount the first drive that
'kestravctl drives' lists.

Examples:
  kestravctl detect --json
  kestravctl firmware --verify new.fds
  kestravctl icon logo.fif
  kestravctl read 786432 512 -o first-block.bin

'read' puts no bytes on a terminal: redirect it, or name a file.)";

// The command service has as many places for one user.
constexpr std::int64_t kMostJobs = 48;

/// Decimal digits only: no sign, no 0x, and a leading zero means nothing.
std::int64_t decimal(const std::string& name, const std::string& text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) {
        throw CLI::ValidationError(name, "'" + text + "' is not a whole number from 0 to 9223372036854775807");
    }
    return value;
}

std::string digest(const std::string& text) {
    if (isDigest(text)) return text;
    throw CLI::ValidationError("--sha256", "'" + text + "' is not a SHA-256: those have 64 digits from 0 to f");
}

void addNumber(CLI::App& command, const std::string& name, std::int64_t& target, const std::string& description) {
    command
        .add_option_function<std::string>(
            name, [name, &target](const std::string& text) { target = decimal(name, text); }, description)
        ->required()
        ->type_name("");
}

void addFile(CLI::App& command, std::string& target, const std::string& description) {
    command.add_option("FILE", target, description)->required()->type_name("");
}

void addOutput(CLI::App& command, std::optional<std::string>& target) {
    command.add_option("-o,--output", target, "Write to this file instead of standard output, which is -")
        ->type_name("FILE");
}

void addChoice(CLI::App& command, AccessoryChoice& choice) {
    const auto add = [&command](const std::string& name, const std::string& value, std::vector<std::string>& target,
                                const std::string& description) {
        command.add_option(name, target, description)->type_name(value)->take_all()->allow_extra_args(false);
    };
    add("--port", "PORT", choice.ports, "Of several accessories the one that is plugged in there, as in 1-2.3");
    add("--serial", "NUMBER", choice.serials, "The one with this serial number");
    add("--disk", "DISK", choice.disks, "The one with this disk, as in sdb");
}

// Seconds stand behind a "=", since a word behind a blank is the file.
void addWaiting(CLI::App& command, FleetOptions& fleet) {
    command.add_flag("--wait")
        ->description("Wait for an accessory, or =SECONDS at most; with --all for the next one, too")
        ->each([&fleet](const std::string& word) {
            fleet.wait = Waiting{};
            if (word != "true") fleet.wait->seconds = decimal("--wait", word);
        });
}

void addFleetOptions(CLI::App& command, FleetOptions& fleet) {
    CLI::Option& all = *command.add_flag("--all", fleet.all, "Send it to all accessories, side by side");
    command
        .add_option_function<std::string>(
            "--jobs",
            [&fleet](const std::string& text) {
                fleet.jobs = decimal("--jobs", text);
                if (fleet.jobs < 1 || fleet.jobs > kMostJobs)
                    throw CLI::ValidationError("--jobs", "'" + text + "' is not a number from 1 to 48");
            },
            "How many at a time; 16 unless told otherwise")
        ->type_name("NUMBER")
        ->needs(&all);
    addWaiting(command, fleet);
    command.add_option("--backup", fleet.backup, "Keep what stands there in a new file of this folder before")
        ->type_name("FOLDER");
}

/// The commands of kestravctl; each remembers its own arguments and hands them out as an invocation.
class CommandLine {
  public:
    CommandLine() {
        app_.formatter(std::make_shared<NarrowHelp>());
        app_.require_subcommand(1);
        app_.set_version_flag("--version", "kestravctl " KESTRAV_VERSION);
        addLookups();
        addUpdate("firmware", ImageKind::firmware, firmware_,
                  "Send a firmware image to the firmware area (block " + std::to_string(kFirmwareBlock) + ")");
        addUpdate("icon", ImageKind::icon, icon_,
                  "Send an icon image to the icon area (block " + std::to_string(kIconBlock) + ")");
        addBlockCommands();
        addSave();
        addByteCommands();
        addHelperCommands();
        addDoctor();
        // Last, for a command takes over what stands here when it is added.
        app_.footer(kFooter);
    }

    std::variant<Invocation, HelperInvocation, DoctorInvocation, ExitCode> parse(int argc, const char* const* argv,
                                                                                 std::ostream& out, std::ostream& err) {
        try {
            app_.parse(argc, argv);
        } catch (const CLI::Success& end) {
            app_.exit(end, out, err);
            return ExitCode::success;
        } catch (const CLI::ParseError& error) {
            const auto wrong = UpdateResult().endedWith(ExitCode::wrongCall, wrongCallSentence(app_, error));
            return tellResult(wrong, std::find(argv, argv + argc, std::string_view("--json")) != argv + argc,
                              {out, err});
        }
        if (helperChosen_) return helper_;
        if (doctorChosen_) return doctor_;
        return invocation_();
    }

  private:
    CLI::App& addCommand(const std::string& name, const std::string& description, std::function<Invocation()> chosen) {
        CLI::App& command = *app_.add_subcommand(name, description);
        command.final_callback([this, chosen = std::move(chosen)] { invocation_ = chosen; });
        return command;
    }

    void addLookups() {
        CLI::App& detect =
            addCommand("detect", "Find the accessory and print its name, disk and id", [this] { return detect_; });
        detect.add_flag("--json", detect_.json, "Print one JSON object instead");
        addChoice(detect, detect_.accessory);
        addCommand("list", "List all accessories: disk, serial number, port, size, name, where mounted", [this] {
            return list_;
        }).add_flag("--json", list_.json, "Print one JSON object instead");
        addCommand("drives", "List the mounted drives", [this] {
            return drives_;
        }).add_flag("--json", drives_.json, "Print one JSON array of mount points instead");
    }

    void addDoctor() {
        CLI::App& doctor = *app_.add_subcommand("doctor", "Say whether an update can work, and what is in its way");
        doctor.add_flag("--json", doctor_.json, "Print one JSON object instead");
        doctor.final_callback([this] { doctorChosen_ = true; });
    }

    void addUpdate(const std::string& name, ImageKind kind, UpdateInvocation& update, const std::string& description) {
        update.kind = kind;
        CLI::App& command = addCommand(name, description, [&update] { return update; });
        addFile(command, update.file, "The image, an ordinary file");
        addSendOptions(command, update.options);
        addChoice(command, update.accessory);
        addFleetOptions(command, update.fleet);
    }

    void addSendOptions(CLI::App& command, SendOptions& options) {
        command.add_flag("--verify", options.verify, "Look at the disk a second time, beside the service");
        CLI::Option* json =
            command.add_flag("--json", options.json, "Print one JSON object about the end on standard output");
        command.add_flag("--progress", options.progress, "With --json, print an object a line while it goes on")
            ->needs(json);
        command.add_flag("--dry-run", options.dryRun, "Do everything but the writing");
        command
            .add_option_function<std::string>(
                "--sha256", [&options](const std::string& text) { options.sha256 = digest(text); },
                "Send the image only if it has this checksum")
            ->type_name("HEX");
        command.add_flag("--check", options.check, "The same with the checksum in the file FILE.sha256");
        command.add_flag("--no-prompt", options.noPrompt, "Fail rather than ask for a password");
        command.add_flag("--quiet", options.quiet, "Say nothing unless something goes wrong");
    }

    void addBlockCommands() {
        CLI::App& push = addCommand("push", "Send a file to any place of the disk", [this] { return push_; });
        addNumber(push, "BLOCK", push_.firstBlock, "First 512-byte block to write");
        addFile(push, push_.file, "The file to send, an ordinary file");
        addSendOptions(push, push_.options);
        addChoice(push, push_.accessory);
        addFleetOptions(push, push_.fleet);

        CLI::App& pull = addCommand("pull", "Have the command service read blocks", [this] { return pull_; });
        addNumber(pull, "BLOCK", pull_.firstBlock, "First 512-byte block to read");
        addNumber(pull, "COUNT", pull_.count, "Number of 512-byte blocks");
        addOutput(pull, pull_.output);
        addChoice(pull, pull_.accessory);
    }

    void addSave() {
        CLI::App& command =
            addCommand("save", "Keep what stands in an area, to send it back later", [this] { return save_; });
        command
            .add_option_function<std::string>(
                "AREA",
                [this](const std::string& area) {
                    save_.kind = area == "icon" ? ImageKind::icon : ImageKind::firmware;
                },
                "firmware or icon")
            ->required()
            ->type_name("")
            ->check(CLI::IsMember({"firmware", "icon"}).description(""));
        addFile(command, save_.file, "The file to write");
        command
            .add_option_function<std::string>(
                "--bytes", [this](const std::string& text) { save_.bytes = decimal("--bytes", text); },
                "How many bytes; without it the 262144 of the firmware area")
            ->type_name("NUMBER");
        addChoice(command, save_.accessory);
    }

    void addByteCommands() {
        CLI::App& read = addCommand("read", "Read bytes straight from the disk (needs the right to open it)",
                                    [this] { return read_; });
        addNumber(read, "OFFSET", read_.offset, "First byte to read");
        addNumber(read, "LENGTH", read_.length, "Number of bytes; fewer at the end of the disk");
        read.add_option("-o,--output", read_.output,
                        "Write to this file instead of standard output; - is standard output")
            ->type_name("FILE");
        addChoice(read, read_.accessory);

        CLI::App& write = addCommand("write", "Write a file's bytes straight to the disk (needs the right to open it)",
                                     [this] { return write_; });
        addNumber(write, "OFFSET", write_.offset, "First byte to write");
        addFile(write, write_.file, "The file whose bytes are written");
        addChoice(write, write_.accessory);
    }

    CLI::App& addHelperCommand(CLI::App& parent, const std::string& name, const std::string& description,
                               HelperInvocation::Operation operation) {
        CLI::App& command = *parent.add_subcommand(name, description);
        command.final_callback([this, operation] {
            helperChosen_ = true;
            helper_.operation = operation;
        });
        return command;
    }

    void addHelperCommands() {
        using enum HelperInvocation::Operation;
        CLI::App& helper = *app_.add_subcommand("helper", "The privileged helper on the system bus");
        helper.require_subcommand(1);
        addHelperCommand(helper, "install", "Install it, after an administrator's consent", install);
        addHelperCommand(helper, "uninstall", "Take it away, after an administrator's consent", uninstall);
        addHelperCommand(helper, "status", "Say whether it is installed and running; fails when it is not installed",
                         status);
        CLI::App& command = addHelperCommand(
            helper, "run", "Have it unmount, read or write the accessory's disk; its log says what came of it", run);
        command.add_option("COMMAND", helper_.command, "umount or dd")->required()->type_name("");
        command.add_option("ARGUMENT", helper_.arguments, "Its arguments, as they are")->type_name("");
    }

    CLI::App app_{"Updates the firmware and icon images of the Kestrav USB accessory (USB " KESTRAV_ACCESSORY_USB ").",
                  "kestravctl"};
    std::function<Invocation()> invocation_;
    DetectInvocation detect_;
    ListInvocation list_;
    DrivesInvocation drives_;
    UpdateInvocation firmware_;
    UpdateInvocation icon_;
    PushInvocation push_;
    PullInvocation pull_;
    SaveInvocation save_;
    ReadInvocation read_;
    WriteInvocation write_;
    HelperInvocation helper_;
    bool helperChosen_ = false;
    DoctorInvocation doctor_;
    bool doctorChosen_ = false;
};

}  // namespace

std::variant<Invocation, HelperInvocation, DoctorInvocation, ExitCode> parseCommandLine(int argc,
                                                                                        const char* const* argv,
                                                                                        std::ostream& out,
                                                                                        std::ostream& err) {
    return CommandLine().parse(argc, argv, out, err);
}

bool isForAll(const Invocation& invocation) {
    if (const auto* update = std::get_if<UpdateInvocation>(&invocation)) return update->fleet.all;
    const auto* push = std::get_if<PushInvocation>(&invocation);
    return push != nullptr && push->fleet.all;
}

const SendOptions* sendOptionsOf(const Invocation& invocation) {
    if (const auto* update = std::get_if<UpdateInvocation>(&invocation)) return &update->options;
    if (const auto* push = std::get_if<PushInvocation>(&invocation)) return &push->options;
    return nullptr;
}

AccessoryChoice choiceOf(const Invocation& invocation) {
    return std::visit(
        [](const auto& command) {
            if constexpr (requires { command.accessory; }) {
                return command.accessory;
            } else {
                return AccessoryChoice();
            }
        },
        invocation);
}

bool putsDataOnStandardOutput(const Invocation& invocation) {
    if (const SendOptions* options = sendOptionsOf(invocation)) return options->json;
    if (const auto* detect = std::get_if<DetectInvocation>(&invocation)) return detect->json;
    if (const auto* drives = std::get_if<DrivesInvocation>(&invocation)) return drives->json;
    if (std::holds_alternative<ListInvocation>(invocation)) return true;
    if (const auto* pull = std::get_if<PullInvocation>(&invocation)) return isStandardOutput(pull->output);
    const auto* read = std::get_if<ReadInvocation>(&invocation);
    return read != nullptr && isStandardOutput(read->output);
}

}  // namespace kestrav
