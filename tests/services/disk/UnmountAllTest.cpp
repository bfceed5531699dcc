#include <gtest/gtest.h>

#include "services/disk/unmountAll.h"

namespace kestrav {
namespace {

/// A table that is behind the time.
class StaleMounts final : public MountTable {
  public:
    Outcome<std::vector<MountedPlace>> placesOf(dev_t) const override {
        return std::vector<MountedPlace>{{"/missing/folder/place"}};
    }
};

TEST(UnmountAll, EndsItsSentenceOnce) {
    const auto done = unmountAll(StaleMounts(), {1}, "sdb1");
    ASSERT_FALSE(done);
    EXPECT_EQ(
        done.problem().sentence,
        "sdb1 is mounted at /missing/folder/place, and the folder of the mount point can't be opened: No such file "
        "or directory.");
}

}  // namespace
}  // namespace kestrav
