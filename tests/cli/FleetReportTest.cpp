#include <gtest/gtest.h>
#include <sstream>

#include "cli/FleetReport.h"
#include "cli/fleetWords.h"
#include "cli/interruptedResult.h"

namespace kestrav {
namespace {

class Interrupted : public testing::Test {
  protected:
    static UpdateResult at(const std::string& port, UpdateResult result) {
        result.disk = "sd" + port.substr(2);
        result.port = port;
        return result;
    }
    static UpdateResult writing(const std::string& port) {
        return at(port, interruptedResult({"", WritePhase::writing}));
    }
    static UpdateResult done(const std::string& port) {
        return at(port, UpdateResult().endedWith(ExitCode::success, "The image is there."));
    }

    SendOptions options_;
    std::ostringstream out_;
    std::ostringstream err_;
    FleetReport report_{options_, {out_, err_}};
};

TEST_F(Interrupted, NamesInItsTableThoseThatTheServiceGoesOnWith) {
    report_.add(done("1-b"));
    report_.interrupt({writing("1-a"), writing("1-c")});
    const std::string table = out_.str().substr(out_.str().find("DISK"));
    EXPECT_EQ(table,
              "DISK  SERIAL  PORT  STATUS  SECONDS  RESULT\n"
              "sda   -       1-a   130     0.0      The service goes on writing. Don't unplug; journalctl -t "
              "kestrav-commandd tells the end.\n"
              "sdb   -       1-b   0       0.0      The image is there.\n"
              "sdc   -       1-c   130     0.0      The service goes on writing. Don't unplug; journalctl -t "
              "kestrav-commandd tells the end.\n");
    EXPECT_EQ(err_.str(),
              "kestravctl: It was ended while accessories were being written. The service goes on with what it has "
              "begun: don't unplug; journalctl -t kestrav-commandd tells the end.\n");
}

TEST_F(Interrupted, IsTheUsualEndOfALineThatWaitsForTheNext) {
    report_.add(done("1-b"));
    report_.interrupt({});
    EXPECT_NE(out_.str().find("sdb   -       1-b   0 "), std::string::npos) << out_.str();
    EXPECT_EQ(err_.str(), "kestravctl: It was ended while nothing was being written. The accessory holds the image.\n");
}

TEST_F(Interrupted, SaysSoBeforeTheFirst) {
    report_.interrupt({});
    EXPECT_EQ(out_.str(), "");
    EXPECT_EQ(err_.str(), "kestravctl: It was ended before an accessory was written.\n");
}

TEST_F(Interrupted, IsOneJsonObjectAndTheLast) {
    options_.json = true;
    report_.interrupt({writing("1-a")});
    const std::string object = out_.str();
    EXPECT_TRUE(object.starts_with(R"({"accessories":[{"disk":"sda",)")) << object;
    EXPECT_NE(object.find(R"(],"status":130,"problem":"It was ended while accessories were being written. )"),
              std::string::npos)
        << object;
    report_.add(done("1-b"));
    report_.interrupt({});
    EXPECT_EQ(out_.str(), object);
}

TEST(FleetWords, CountTheAccessoriesOfEachPhase) {
    const WriteState writing{"sda", WritePhase::writing};
    const WriteState checking{"sdb", WritePhase::checking};
    EXPECT_EQ(fleetWords(3, {writing, checking, writing}), "Ended: 3, writing: 2, checking: 1. Don't unplug them.");
    EXPECT_EQ(fleetWords(3, {{"sda", WritePhase::done}}), "");
    EXPECT_EQ(fleetWords(0, {}), "");
}

TEST(FleetWords, AreNoneWhileSomebodyMayTypeAPassword) {
    EXPECT_EQ(fleetWords(1, {{"sda", WritePhase::writing}, {"sdb", WritePhase::asking}}), "");
}

}  // namespace
}  // namespace kestrav
