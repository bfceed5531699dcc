#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

#include "services/disk/BlockDevices.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "tests/base/RecordingLog.h"
#include "tests/services/asker/FakeConsent.h"

namespace kestrav {

/// A computer without any disk.
class NoDevices final : public BlockDevices {
  public:
    Outcome<BlockDevice> find(dev_t) const override { return refused("no such device."); }
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t) const override { return refused("no such device."); }
    std::vector<std::string> builtOnTopOf(dev_t) const override { return {}; }
};

/// The gate of such a computer.
class GateWithoutDisks : public testing::Test {
  protected:
    GateAnswer unmount(Asker& asker) { return gate_.perform(asker, "umount", std::vector<std::string>{"/dev/sdzzs1"}); }
    GateAnswer remove(Asker& asker) { return gate_.perform(asker, "rm", std::vector<std::string>{"-rf", "/"}); }

    FakeConsent consent_;
    NoDevices devices_;
    MountinfoTable mounts_;
    RecordingLog log_;
    RequestLog requests_{log_};
    Gate gate_{consent_, devices_, mounts_, requests_};
};

}  // namespace kestrav
