#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <variant>
#include <vector>

#include "services/privileged/BlockDevices.h"
#include "services/privileged/Consent.h"

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

}  // namespace kestrav
