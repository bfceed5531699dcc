#include <boost/json.hpp>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/TemporaryFolder.h"
#include "tests/command/LoopbackService.h"
#include "tests/device/fakes/EngineOnFakes.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using CommandLine = std::vector<std::string>;

CommandLine commandLine(const std::string& request) {
    const boost::json::object object = boost::json::parse(request).as_object();
    EXPECT_EQ(object.size(), 2U);
    CommandLine words{std::string(object.at("command").as_string())};
    for (const boost::json::value& argument : object.at("arguments").as_array())
        words.emplace_back(argument.as_string());
    return words;
}

// An engine that talks to a real service on loopback.
class Update : public ::testing::Test {
  protected:
    std::string imageOf(const std::string& content, const std::string& name = "image") {
        std::string path = folder_.path() / name;
        std::ofstream(path) << content;
        return path;
    }
    std::vector<CommandLine> commandLines() const {
        std::vector<CommandLine> lines;
        for (const std::string& request : service_.requests())
            lines.push_back(commandLine(request));
        return lines;
    }

    TemporaryFolder folder_;
    LoopbackService service_;
    EngineOnFakes on_{service_.port()};
};

struct Area {
    const char* title;
    bool (KestravDevice::*update)(std::string_view);
    std::string seek;
};

void PrintTo(const Area& row, std::ostream* out) {
    *out << row.title;
}

class EitherUpdate : public Update, public ::testing::WithParamInterface<Area> {
  protected:
    bool update(const std::string& path) { return (on_.engine.*GetParam().update)(path); }
};

TEST_P(EitherUpdate, HandsOverUmountAndDdAndSaysWhatItDoes) {
    const std::string path = imageOf(std::string(40000, 'f'));
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    EXPECT_THAT(commandLines(),
                ElementsAre(CommandLine{"umount", "/dev/disk2s1"},
                            CommandLine{"dd", "if=" + path, "of=/dev/rdisk2", GetParam().seek, "bs=512"}));
    EXPECT_THAT(on_.lines(), ElementsAre("Loaded icon file: " + path + " with 40000 bytes.",
                                         "Writing to device memory space.", "", "Finished writing to device."));
    EXPECT_THAT(on_.systemLog.entries(), ElementsAre("done", "done"));
    EXPECT_THAT(on_.disks.journal, IsEmpty());
}

/// Notes beside each line how many commands the service had been asked for by then.
class LinesBetweenCommands final : public LogSink {
  public:
    explicit LinesBetweenCommands(const LoopbackService& service) : service_(service) {}
    void log(std::string_view) override { commandsBefore.push_back(service_.requests().size()); }

    std::vector<std::size_t> commandsBefore;

  private:
    const LoopbackService& service_;
};

TEST_P(EitherUpdate, SaysThatItWritesBeforeItDoesAndTheRestAfterwards) {
    const auto between = std::make_shared<LinesBetweenCommands>(service_);
    on_.engine.setParent(between);
    on_.plugIn("disk2");
    EXPECT_TRUE(update(imageOf("f")));
    EXPECT_THAT(between->commandsBefore, ElementsAre(0U, 0U, 2U, 2U));
}

TEST_P(EitherUpdate, TakesASingleByte) {
    const std::string path = imageOf("f");
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    EXPECT_THAT(on_.lines().front(), "Loaded icon file: " + path + " with 1 bytes.");
    EXPECT_EQ(commandLines().size(), 2U);
}

TEST_P(EitherUpdate, TakesAFileThatIsLongerThanTheFirmwaresArea) {
    const std::string path = imageOf(std::string(512 * 512 + 1, 'f'));
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    EXPECT_THAT(on_.lines().front(), "Loaded icon file: " + path + " with 262145 bytes.");
    ASSERT_EQ(commandLines().size(), 2U);
    EXPECT_THAT(commandLines()[1], ElementsAre("dd", "if=" + path, "of=/dev/rdisk2", GetParam().seek, "bs=512"));
}

TEST_P(EitherUpdate, RefusesAnEmptyFile) {
    const std::string path = imageOf("");
    on_.plugIn("disk2");
    EXPECT_FALSE(update(path));
    EXPECT_THAT(on_.lines(), ElementsAre("Unabled to read file: " + path));
    EXPECT_THAT(commandLines(), IsEmpty());
    EXPECT_EQ(on_.engine.device, DeviceObject{}) << "there is nothing to look for a device for";
}

TEST_P(EitherUpdate, PassesThePathUnchangedAsOneArgument) {
    const std::string path = imageOf("f", "of=a b;c 'd' \"e\" %s \\ \u00e9");
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    ASSERT_EQ(commandLines().size(), 2U);
    EXPECT_EQ(commandLines()[1][1], "if=" + path);
}

TEST_P(EitherUpdate, EndsEarlyWithoutAnAccessory) {
    const std::string path = imageOf("fff");
    EXPECT_FALSE(update(path));
    EXPECT_THAT(on_.lines(),
                ElementsAre("Loaded icon file: " + path + " with 3 bytes.", "Writing to device memory space.",
                            "Device not ready yet!", "Failed writing to device."));
    EXPECT_THAT(commandLines(), IsEmpty());
}

TEST_P(EitherUpdate, EndsEarlyWhenTheRegistryIsOutOfReach) {
    const std::string path = imageOf("fff");
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    on_.registry.breakDown();
    EXPECT_FALSE(update(path));
    EXPECT_EQ(on_.engine.device, DeviceObject{});
    EXPECT_EQ(on_.lines().back(), "Failed writing to device.");
    EXPECT_EQ(commandLines().size(), 2U);
}

TEST_P(EitherUpdate, GoesOnWithTheStaleNameOfAnUnpluggedAccessory) {
    const std::string path = imageOf("fff");
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    on_.registry.unplugAll();
    EXPECT_TRUE(update(path));
    ASSERT_EQ(commandLines().size(), 4U);
    EXPECT_EQ(commandLines()[3], commandLines()[1]);
    EXPECT_EQ(on_.lines().back(), "Finished writing to device.");
}

TEST_P(EitherUpdate, NamesTheDiskNilForADeviceWithoutOne) {
    on_.plugIn(std::nullopt);
    EXPECT_TRUE(update(imageOf("fff")));
    ASSERT_EQ(commandLines().size(), 2U);
    EXPECT_EQ(commandLines()[0][1], "/dev/nils1");
    EXPECT_EQ(commandLines()[1][2], "of=/dev/rnil");
}

TEST_P(EitherUpdate, LearnsNothingOfAServiceThatFails) {
    service_.setBehaviour(closesAtOnce());
    const std::string path = imageOf("fff");
    on_.plugIn("disk2");
    EXPECT_TRUE(update(path));
    EXPECT_THAT(on_.lines(), ElementsAre("Loaded icon file: " + path + " with 3 bytes.",
                                         "Writing to device memory space.", "", "Finished writing to device."));
}

INSTANTIATE_TEST_SUITE_P(Areas, EitherUpdate,
                         ::testing::Values(Area{"Firmware", &KestravDevice::firmwareUpdate, "seek=1536"},
                                           Area{"Icon", &KestravDevice::iconUpdate, "seek=2048"}),
                         [](const auto& area) { return area.param.title; });

// Says every line on standard error, where a death test sees it.
class SpokenLines final : public LogSink {
  public:
    void log(std::string_view line) override { std::cerr << line << '\n'; }
};

class UnreadableImage : public ::testing::TestWithParam<Area> {};

TEST_P(UnreadableImage, StopsTheProcessWithoutAWord) {
    const TemporaryFolder folder;
    EngineOnFakes on;
    on.plugIn("disk2");
    on.engine.setParent(std::make_shared<SpokenLines>());
    for (const std::string& path : {(folder.path() / "missing").string(), folder.path().string(), std::string()}) {
        EXPECT_EXIT((on.engine.*GetParam().update)(path), ::testing::KilledBySignal(SIGABRT), ::testing::Eq(""))
            << path;
    }
}

INSTANTIATE_TEST_SUITE_P(Areas, UnreadableImage,
                         ::testing::Values(Area{"Firmware", &KestravDevice::firmwareUpdate, ""},
                                           Area{"Icon", &KestravDevice::iconUpdate, ""}),
                         [](const auto& area) { return area.param.title; });

TEST(UpdateWithoutAService, ReportsSuccessAllTheSame) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "image";
    std::ofstream(path) << "fff";
    EngineOnFakes on;
    on.plugIn("disk2");
    EXPECT_TRUE(on.engine.firmwareUpdate(path));
    EXPECT_EQ(on.lines().back(), "Finished writing to device.");
    EXPECT_EQ(on.systemLog.entries().size(), 2U) << "one for each command";
}

class PushDevice : public Update, public ::testing::WithParamInterface<std::pair<std::int64_t, std::string>> {};

TEST_P(PushDevice, TakesAnyFirstBlockAndAnyPath) {
    on_.plugIn("disk2");
    EXPECT_TRUE(on_.engine.pushDevice(GetParam().first, "no such file"));
    EXPECT_THAT(commandLines(), ElementsAre(CommandLine{"umount", "/dev/disk2s1"},
                                            CommandLine{"dd", "if=no such file", "of=/dev/rdisk2",
                                                        "seek=" + GetParam().second, "bs=512"}));
    EXPECT_THAT(on_.lines(), ElementsAre(""));
}

INSTANTIATE_TEST_SUITE_P(Blocks, PushDevice,
                         ::testing::Values(std::pair{0, "0"}, std::pair{-5, "-5"},
                                           std::pair{INT64_MAX, "9223372036854775807"},
                                           std::pair{INT64_MIN, "-9223372036854775808"}));

TEST_F(Update, PushNeedsADisk) {
    EXPECT_FALSE(on_.engine.pushDevice(1, "image"));
    EXPECT_THAT(on_.lines(), ElementsAre("Device not ready yet!"));
    EXPECT_THAT(commandLines(), IsEmpty());
}

TEST_F(Update, PullReadsBackWithoutUnmounting) {
    on_.plugIn("disk2");
    EXPECT_EQ(on_.engine.pullDevice(1536, 512), "");
    EXPECT_THAT(commandLines(), ElementsAre(CommandLine{"dd", "if=/dev/rdisk2", "skip=1536", "count=512"}));
    EXPECT_THAT(on_.lines(), IsEmpty());
}

TEST_F(Update, PullWritesNegativeNumbersWithTheirSign) {
    on_.plugIn("disk2");
    on_.engine.pullDevice(-1, INT64_MIN);
    EXPECT_THAT(commandLines(),
                ElementsAre(CommandLine{"dd", "if=/dev/rdisk2", "skip=-1", "count=-9223372036854775808"}));
}

TEST_F(Update, PullNeedsADisk) {
    EXPECT_EQ(on_.engine.pullDevice(1, 1), "");
    EXPECT_THAT(on_.lines(), ElementsAre("Device not ready yet!"));
    EXPECT_THAT(commandLines(), IsEmpty());
}

TEST_F(Update, PullForgetsTheDeviceWhenTheRegistryIsOutOfReach) {
    on_.plugIn("disk2");
    on_.engine.pullDevice(1, 1);
    on_.registry.breakDown();
    EXPECT_EQ(on_.engine.pullDevice(1, 1), "");
    EXPECT_EQ(on_.engine.device, DeviceObject{});
    EXPECT_EQ(commandLines().size(), 1U);
}

TEST_F(Update, RunsACommandOfTheCallersToo) {
    const std::vector<std::string> arguments{"a b", ""};
    EXPECT_EQ(on_.engine.runWithCommand("word", arguments), "");
    EXPECT_THAT(commandLines(), ElementsAre(CommandLine{"word", "a b", ""}));
}

}  // namespace
}  // namespace kestrav
