#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/types.h>
#include <variant>
#include <vector>

#include "services/commandd/RequestRunner.h"
#include "services/privileged/BlockDevices.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"
#include "services/privileged/RequestLog.h"
#include "tests/services/RecordingLog.h"

namespace kestrav {

/// A computer without any disk.
class NoDevices final : public BlockDevices {
  public:
    Outcome<BlockDevice> find(dev_t) const override { return refused("no such device."); }
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t) const override { return refused("no such device."); }
    std::vector<std::string> builtOnTopOf(dev_t) const override { return {}; }
};

/// Answers as it is told, and keeps who was asked about.
class FakeConsent final : public Consent {
  public:
    std::optional<Problem> answer;
    std::function<void()> meanwhile = [] {};  ///< happens while a person would think about it
    std::vector<AskingProcess> askedAbout;

    std::optional<Problem> refusal(const ConsentSubject& subject, bool, const std::function<bool()>&) override {
        askedAbout.push_back(std::get<AskingProcess>(subject));
        meanwhile();
        return answer;
    }
};

/// What carries requests out on such a computer.
class RunnerWithoutDisks : public testing::Test {
  protected:
    FakeConsent consent_;
    NoDevices devices_;
    MountinfoTable mounts_;
    RecordingLog log_;
    RequestLog requests_{log_};
    Gate gate_{devices_, mounts_, requests_};
    RequestRunner runner_{consent_, gate_, requests_};
};

}  // namespace kestrav
