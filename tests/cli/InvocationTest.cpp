#include <gtest/gtest.h>
#include <sstream>
#include <vector>

#include "cli/Invocation.h"
#include "cli/nearestWord.h"

namespace kestrav {
namespace {

struct Parsed {
    std::variant<Invocation, HelperInvocation, DoctorInvocation, ExitCode> result;
    std::string out;
    std::string err;
};

Parsed parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "kestravctl");
    std::ostringstream out;
    std::ostringstream err;
    auto result = parseCommandLine(static_cast<int>(arguments.size()), arguments.data(), out, err);
    return {std::move(result), out.str(), err.str()};
}

template <class Expected>
Expected parsedAs(std::vector<const char*> arguments) {
    const Parsed parsed = parse(std::move(arguments));
    const auto* invocation = std::get_if<Invocation>(&parsed.result);
    EXPECT_NE(invocation, nullptr) << parsed.err;
    if (invocation == nullptr || !std::holds_alternative<Expected>(*invocation)) {
        ADD_FAILURE() << "not the command that was asked for";
        return Expected{};
    }
    return std::get<Expected>(*invocation);
}

TEST(ParseCommandLine, ReadsDetect) {
    EXPECT_FALSE(parsedAs<DetectInvocation>({"detect"}).json);
    EXPECT_TRUE(parsedAs<DetectInvocation>({"detect", "--json"}).json);
}

TEST(ParseCommandLine, ReadsList) {
    EXPECT_FALSE(parsedAs<ListInvocation>({"list"}).json);
    EXPECT_TRUE(parsedAs<ListInvocation>({"list", "--json"}).json);
}

TEST(ParseCommandLine, ReadsWhichAccessoryIsMeantBeforeAndBehindTheOtherWords) {
    const auto push = parsedAs<PushInvocation>({"push", "--serial", "A", "7", "--port=1-2", "f", "--serial", "B"});
    EXPECT_EQ(push.firstBlock, 7);
    EXPECT_EQ(push.file, "f");
    EXPECT_EQ(push.accessory.serials, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(push.accessory.ports, (std::vector<std::string>{"1-2"}));
    EXPECT_EQ(choiceOf(push).ports, push.accessory.ports);
    EXPECT_EQ(parsedAs<UpdateInvocation>({"icon", "f", "--disk", "sdb"}).accessory.disks.size(), 1U);
    EXPECT_EQ(parsedAs<WriteInvocation>({"write", "--disk", "sdb", "1", "f"}).accessory.disks.size(), 1U);
    EXPECT_EQ(parsedAs<ReadInvocation>({"read", "--disk", "sdb", "1", "2"}).accessory.disks.size(), 1U);
    EXPECT_EQ(parsedAs<DetectInvocation>({"detect", "--disk", "sdb"}).accessory.disks.size(), 1U);
}

TEST(ParseCommandLine, ReadsHowSeveralAccessoriesAreServed) {
    const FleetOptions none = parsedAs<UpdateInvocation>({"firmware", "f"}).fleet;
    EXPECT_FALSE(none.all || none.wait || none.backup);
    const auto all = parsedAs<UpdateInvocation>({"firmware", "--all", "--jobs", "3", "--wait", "f", "--backup", "b"});
    EXPECT_EQ(all.file, "f");
    EXPECT_TRUE(all.fleet.all);
    EXPECT_EQ(all.fleet.jobs, 3);
    ASSERT_TRUE(all.fleet.wait);
    EXPECT_FALSE(all.fleet.wait->seconds);
    EXPECT_EQ(all.fleet.backup, "b");
    const auto push = parsedAs<PushInvocation>({"push", "1", "f", "--wait=70"});
    ASSERT_TRUE(push.fleet.wait);
    EXPECT_EQ(push.fleet.wait->seconds, 70);
    for (const std::vector<const char*>& wrong : {std::vector{"icon", "f", "--jobs", "3"},
                                                  {"icon", "f", "--all", "--jobs", "0"},
                                                  {"icon", "f", "--wait=x"},
                                                  {"icon", "f", "--all", "--jobs", "49"},
                                                  {"icon", "f", "--wait=-1"}})
        EXPECT_TRUE(std::holds_alternative<ExitCode>(parse(wrong).result)) << wrong.back();
}

TEST(ParseCommandLine, ReadsWhereThePulledBlocksGo) {
    EXPECT_FALSE(parsedAs<PullInvocation>({"pull", "1", "2"}).output);
    EXPECT_EQ(parsedAs<PullInvocation>({"pull", "1", "2", "-o", "x"}).output, "x");
    EXPECT_TRUE(putsDataOnStandardOutput(parsedAs<PullInvocation>({"pull", "1", "2"})));
    EXPECT_TRUE(putsDataOnStandardOutput(parsedAs<ReadInvocation>({"read", "1", "2", "-o", "-"})));
    EXPECT_FALSE(putsDataOnStandardOutput(parsedAs<PullInvocation>({"pull", "1", "2", "-o", "x"})));
}

TEST(ParseCommandLine, ReadsWhatIsSaved) {
    const auto firmware = parsedAs<SaveInvocation>({"save", "firmware", "f"});
    EXPECT_EQ(firmware.kind, ImageKind::firmware);
    EXPECT_EQ(firmware.file, "f");
    EXPECT_FALSE(firmware.bytes);
    const auto icon = parsedAs<SaveInvocation>({"save", "icon", "f", "--bytes", "70"});
    EXPECT_EQ(icon.kind, ImageKind::icon);
    EXPECT_EQ(icon.bytes, 70);
    EXPECT_TRUE(std::holds_alternative<ExitCode>(parse({"save", "0", "f"}).result)) << "a number is no area";
}

TEST(ParseCommandLine, ReadsDrives) {
    EXPECT_FALSE(parsedAs<DrivesInvocation>({"drives"}).json);
    EXPECT_TRUE(parsedAs<DrivesInvocation>({"drives", "--json"}).json);
}

struct HelperRow {
    const char* name;
    std::vector<const char*> words;
    HelperInvocation::Operation operation;
    std::string command;
    std::vector<std::string> arguments;
};

class ParseHelperCommand : public testing::TestWithParam<HelperRow> {};

TEST_P(ParseHelperCommand, ReadsItsWords) {
    const HelperRow& row = GetParam();
    const Parsed parsed = parse(row.words);
    const auto* helper = std::get_if<HelperInvocation>(&parsed.result);
    ASSERT_NE(helper, nullptr) << parsed.err;
    EXPECT_EQ(helper->operation, row.operation);
    EXPECT_EQ(helper->command, row.command);
    EXPECT_EQ(helper->arguments, row.arguments);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParseHelperCommand,
    testing::Values(HelperRow{"Install", {"helper", "install"}, HelperInvocation::Operation::install, "", {}},
                    HelperRow{"Uninstall", {"helper", "uninstall"}, HelperInvocation::Operation::uninstall, "", {}},
                    HelperRow{"Status", {"helper", "status"}, HelperInvocation::Operation::status, "", {}},
                    HelperRow{"Run",
                              {"helper", "run", "umount", "/dev/sdbs1"},
                              HelperInvocation::Operation::run,
                              "umount",
                              {"/dev/sdbs1"}},
                    HelperRow{"RunWithBlanks",
                              {"helper", "run", "dd", "if=/a b.fds", "of=/dev/rsdb", "seek=1536", "bs=512"},
                              HelperInvocation::Operation::run,
                              "dd",
                              {"if=/a b.fds", "of=/dev/rsdb", "seek=1536", "bs=512"}}),
    [](const auto& row) { return row.param.name; });

TEST(ParseCommandLine, WantsAHelperCommandThatIsComplete) {
    EXPECT_EQ(std::get<ExitCode>(parse({"helper"}).result), ExitCode::wrongCall);
    EXPECT_EQ(std::get<ExitCode>(parse({"helper", "run"}).result), ExitCode::wrongCall);
    EXPECT_EQ(std::get<ExitCode>(parse({"helper", "restart"}).result), ExitCode::wrongCall);
    EXPECT_EQ(std::get<ExitCode>(parse({"helper", "install", "now"}).result), ExitCode::wrongCall);
}

TEST(ParseCommandLine, ReadsFirmware) {
    const auto update = parsedAs<UpdateInvocation>({"firmware", "new image.fds"});
    EXPECT_EQ(update.kind, ImageKind::firmware);
    EXPECT_EQ(update.file, "new image.fds");
    EXPECT_FALSE(update.options.verify);
}

TEST(ParseCommandLine, ReadsIconWithVerification) {
    const auto update = parsedAs<UpdateInvocation>({"icon", "--verify", "a=b.fif"});
    EXPECT_EQ(update.kind, ImageKind::icon);
    EXPECT_EQ(update.file, "a=b.fif");
    EXPECT_TRUE(update.options.verify);
}

TEST(ParseCommandLine, ReadsPush) {
    const auto push = parsedAs<PushInvocation>({"push", "2048", "file"});
    EXPECT_EQ(push.firstBlock, 2048);
    EXPECT_EQ(push.file, "file");
}

TEST(ParseCommandLine, ReadsPull) {
    const auto pull = parsedAs<PullInvocation>({"pull", "1536", "3"});
    EXPECT_EQ(pull.firstBlock, 1536);
    EXPECT_EQ(pull.count, 3);
}

TEST(ParseCommandLine, ReadsRead) {
    const auto read = parsedAs<ReadInvocation>({"read", "786432", "512"});
    EXPECT_EQ(read.offset, 786432);
    EXPECT_EQ(read.length, 512);
    EXPECT_FALSE(read.output);
    EXPECT_EQ(parsedAs<ReadInvocation>({"read", "0", "1", "-o", "out.bin"}).output, "out.bin");
}

TEST(ParseCommandLine, ReadsWrite) {
    const auto write = parsedAs<WriteInvocation>({"write", "9223372036854775807", "file"});
    EXPECT_EQ(write.offset, INT64_MAX);
    EXPECT_EQ(write.file, "file");
}

TEST(ParseCommandLine, ReadsALeadingZeroAsDecimal) {
    EXPECT_EQ(parsedAs<PushInvocation>({"push", "010", "file"}).firstBlock, 10);
}

TEST(ParseCommandLine, TakesAFileThatBeginsWithADash) {
    EXPECT_EQ(parsedAs<UpdateInvocation>({"firmware", "--", "-image"}).file, "-image");
}

class WrongCall : public testing::TestWithParam<std::vector<const char*>> {};

TEST_P(WrongCall, SaysWhyAndEndsWithTwo) {
    const Parsed parsed = parse(GetParam());
    ASSERT_TRUE(std::holds_alternative<ExitCode>(parsed.result));
    EXPECT_EQ(std::get<ExitCode>(parsed.result), ExitCode::wrongCall);
    EXPECT_FALSE(parsed.err.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Calls, WrongCall,
    testing::Values(std::vector<const char*>{}, std::vector<const char*>{"format"},
                    std::vector<const char*>{"detect", "now"}, std::vector<const char*>{"detect", "--verify"},
                    std::vector<const char*>{"firmware"}, std::vector<const char*>{"firmware", "a", "b"},
                    std::vector<const char*>{"push", "-1", "file"}, std::vector<const char*>{"push", "0x10", "file"},
                    std::vector<const char*>{"push", "1.5", "file"}, std::vector<const char*>{"push", "", "file"},
                    std::vector<const char*>{"push", "9223372036854775808", "file"},
                    std::vector<const char*>{"pull", "1"}, std::vector<const char*>{"read", "0", "ten"},
                    std::vector<const char*>{"read", "0", "1", "-o"}, std::vector<const char*>{"write", "0"},
                    std::vector<const char*>{"detect", "drives"}));

TEST(ParseCommandLine, NamesTheNumberThatIsNone) {
    EXPECT_NE(parse({"push", "abc", "file"}).err.find("BLOCK: 'abc' is not a whole number"), std::string::npos);
}

struct StumbleRow {
    const char* name;
    std::vector<const char*> words;
    std::string sentence;
};

class Stumble : public testing::TestWithParam<StumbleRow> {};

TEST_P(Stumble, NamesTheWordAndWhatWasMeant) {
    EXPECT_EQ(parse(GetParam().words).err, "kestravctl: " + GetParam().sentence + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Stumble,
    testing::Values(
        StumbleRow{"Nothing", {}, "A command is missing. See 'kestravctl --help'."},
        StumbleRow{"Command",
                   {"frimware", "new.fds"},
                   "'frimware' is not a command. Did you mean 'firmware'? See 'kestravctl --help'."},
        StumbleRow{"FarFromAnyCommand", {"format"}, "'format' is not a command. See 'kestravctl --help'."},
        StumbleRow{"Option",
                   {"firmware", "--verfy", "x"},
                   "'--verfy' is not an option of kestravctl firmware. Did you mean '--verify'? See 'kestravctl "
                   "firmware --help'."},
        StumbleRow{"OptionBeforeTheCommand",
                   {"--jsn", "detect"},
                   "'--jsn' is not an option of kestravctl detect. Did you mean '--json'? See 'kestravctl detect "
                   "--help'."},
        StumbleRow{"OneWordTooMany",
                   {"firmware", "a", "b"},
                   "'b' is one word too many for kestravctl firmware. See 'kestravctl firmware --help'."},
        StumbleRow{"HelperCommand",
                   {"helper", "instal"},
                   "'instal' is not a command of kestravctl helper. Did you mean 'install'? See 'kestravctl helper "
                   "--help'."},
        StumbleRow{"NoFile", {"firmware"}, "FILE is required. See 'kestravctl firmware --help'."},
        StumbleRow{"ControlCharacters", {"\x1b[2J"}, "'\\x1b[2J' is not a command. See 'kestravctl --help'."}),
    [](const auto& row) { return row.param.name; });

TEST(Stumble, IsAnObjectWhereOneIsWanted) {
    const Parsed parsed = parse({"frimware", "--json", "x"});
    EXPECT_EQ(std::get<ExitCode>(parsed.result), ExitCode::wrongCall);
    EXPECT_EQ(parsed.out,
              R"({"disk":null,"serial":null,"port":null,"firstBlock":null,"bytes":null,"verified":false,"seconds":0,)"
              R"("answer":null,"status":2,"problem":"'frimware' is not a command. Did you mean 'firmware'? )"
              "See 'kestravctl --help'.\"}\n");
}

TEST(NearestWord, IsTheOneOfFewestSlips) {
    const std::vector<std::string> known{"push", "pull", "firmware"};
    EXPECT_EQ(nearestWord("pul", known), "pull");
    EXPECT_EQ(nearestWord("psuh", known), "push");
    EXPECT_EQ(nearestWord("firmwaer", known), "firmware");
    EXPECT_EQ(nearestWord("firmwere2", known), "firmware");
    EXPECT_EQ(nearestWord("xyll", known), "pull");
    EXPECT_EQ(nearestWord("xyzl", known), "") << "three of four letters";
    EXPECT_EQ(nearestWord("ab", std::vector<std::string>{"ba"}), "ba")
        << "two letters that changed places are one slip";
    EXPECT_EQ(nearestWord("", known), "");
    EXPECT_EQ(nearestWord("format", known), "");
    EXPECT_EQ(nearestWord(std::string(100000, 'f'), known), "");
}

TEST(Help, FitsEightyColumnsAndHasTheStatusesOnlyOnce) {
    for (const auto& words : std::vector<std::vector<const char*>>{{"--help"},
                                                                   {"detect", "--help"},
                                                                   {"firmware", "--help"},
                                                                   {"icon", "--help"},
                                                                   {"push", "--help"},
                                                                   {"pull", "--help"},
                                                                   {"read", "--help"},
                                                                   {"write", "--help"},
                                                                   {"helper", "--help"},
                                                                   {"doctor", "--help"},
                                                                   {"helper", "run", "--help"}}) {
        const std::string help = parse(words).out;
        std::istringstream lines(help);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80U) << line;
        EXPECT_EQ(help.find("Exit status:") != std::string::npos, words.size() == 1) << help;
        EXPECT_EQ(help.find("Examples:") != std::string::npos, words.size() == 1) << help;
    }
}

TEST(Help, EndsWithZeroAndNamesEveryCommandAndStatus) {
    const Parsed parsed = parse({"--help"});
    EXPECT_EQ(std::get<ExitCode>(parsed.result), ExitCode::success);
    for (const char* word : {"detect", "drives", "firmware", "icon", "push", "pull", "read", "write",
                             "Exit status:", "  0  ", "  1  ", "  2  ", "  3  ", "  4  ", "  5  ", "  6  "}) {
        EXPECT_NE(parsed.out.find(word), std::string::npos) << word;
    }
}

TEST(Help, OfACommandNamesItsArguments) {
    const Parsed parsed = parse({"firmware", "--help"});
    EXPECT_EQ(std::get<ExitCode>(parsed.result), ExitCode::success);
    EXPECT_NE(parsed.out.find("FILE"), std::string::npos);
    EXPECT_NE(parsed.out.find("--verify"), std::string::npos);
}

TEST(Version, GoesToStandardOutput) {
    const Parsed parsed = parse({"--version"});
    EXPECT_EQ(std::get<ExitCode>(parsed.result), ExitCode::success);
    EXPECT_EQ(parsed.out.rfind("kestravctl ", 0), 0U);
}

TEST(StandardOutput, CarriesDataOnlyWhereDataWasAskedFor) {
    EXPECT_TRUE(putsDataOnStandardOutput(DetectInvocation{.json = true}));
    EXPECT_TRUE(putsDataOnStandardOutput(DrivesInvocation{.json = true}));
    EXPECT_TRUE(putsDataOnStandardOutput(ReadInvocation{}));
    EXPECT_FALSE(putsDataOnStandardOutput(ReadInvocation{.output = "file"}));
    EXPECT_FALSE(putsDataOnStandardOutput(DrivesInvocation{}));
    EXPECT_FALSE(putsDataOnStandardOutput(UpdateInvocation{}));
}

}  // namespace
}  // namespace kestrav
