#include <gtest/gtest.h>
#include <limits>

#include "cli/progressObject.h"
#include "cli/progressWords.h"

namespace kestrav {
namespace {

TEST(ProgressWords, SayPhaseShareSpeedAndWhatNotToDo) {
    EXPECT_EQ(progressWords({"sdb", WritePhase::writing, 50, 200, 11340000}),
              "Writing: 25 %, 11.3 MB/s. Don't unplug the accessory.");
    EXPECT_EQ(progressWords({"sdb", WritePhase::checking, 200, 200}), "Checking: 100 %. Don't unplug the accessory.");
    EXPECT_EQ(progressWords({"sdb", WritePhase::unmounting}), "Unmounting. Don't unplug the accessory.");
    EXPECT_EQ(progressWords({"sdb", WritePhase::flushing}),
              "Waiting until the accessory has kept it. Don't unplug the accessory.");
    const std::uint64_t huge = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(progressWords({"sdb", WritePhase::reading, huge, huge}),
              "Reading the image: 100 %. Don't unplug the accessory.");
    EXPECT_EQ(progressWords({"sdb", WritePhase::asking}), "") << "a password may be typed in that line";
    EXPECT_EQ(progressWords({"sdb", WritePhase::done}), "");
}

TEST(ProgressObject, HasEveryMember) {
    EXPECT_EQ(progressObject({"sdb", WritePhase::writing, 50, 200, 7}),
              R"({"disk":"sdb","phase":"writing","done":50,"of":200,"bytesPerSecond":7})");
}

}  // namespace
}  // namespace kestrav
