// Twenty thousand exchanges with the helper over the system bus, a tenth of them with callers that mean it ill.

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/services/helper/FloodingCaller.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/services/soak/Footprint.h"

namespace kestrav {
namespace {

constexpr std::size_t kExchanges = 20'000;
constexpr unsigned kServed = 2;  // processes of root's; one more is the stranger's

void callWithALongText() {
    callHelper(std::string(70'000, 'a'), {});
}
void callWithManyTexts() {
    callHelper("dd", std::vector<std::string>(9'000));
}
void callWithWrongWords() {
    callHelper("rm", {"-rf", "/"});
}
void callAndLeave() {
    callAndGo();
}
void callWithoutConsent() {
    callUnmount();
}
void sendMoreThanIsRead() {
    FloodingCaller().send(FloodingCaller::callWithEmptyArguments(100'000));
}
void comeAndLeave() {
    const FloodingCaller caller;
}
void take() {
    takeHelpersName();
}

constexpr std::array kAttacks{&callWithALongText,  &callWithManyTexts,  &callWithWrongWords, &callAndLeave,
                              &callWithoutConsent, &sendMoreThanIsRead, &comeAndLeave,       &take};

class BusSoak : public Helper {
  protected:
    /// One process alone writes: of two at once one is refused where the first takes long.
    static bool isServed(std::size_t number, bool mayWrite) {
        const bool isWrite = mayWrite && number % 50 == 1;
        const std::string answer = isWrite ? callWrite() : callUnmount();
        return isRight(isWrite ? answer.starts_with("Wrote 40000 bytes to sdzz at block 1536, verified, ")
                               : answer == "sdzz1 was not mounted.",
                       answer);
    }

    static std::size_t exchange(std::size_t count) {
        const std::size_t attacks = count / 10;
        return inProcesses(kServed + 1, [=](unsigned number) {
            std::size_t failures = 0;
            if (number == kServed) {
                becomeUser(kGuest);
                for (std::size_t i = 0; i < attacks; ++i)
                    kAttacks.at(i % kAttacks.size())();
                return failures;
            }
            for (std::size_t i = 0; i < (count - attacks) / kServed; ++i)
                failures += isServed(i, number == 0) ? 0 : 1;
            return failures;
        });
    }
};

TEST_F(BusSoak, LeavesTheHelperAsItWas) {
    startDaemons("NO");
    startHelper();
    const Soak result = soak("D-Bus", helper_.pid(), kExchanges, [](std::size_t count) { return exchange(count); });
    EXPECT_EQ(result.failures, 0U) << "exchanges that went wrong";
    EXPECT_TRUE(helper_.runs());
    EXPECT_EQ(result.atEnd.descriptors, result.atStart.descriptors);
    EXPECT_EQ(result.atEnd.children, 0U);
    EXPECT_LE(result.later, result.grown) << "KiB";
}

}  // namespace
}  // namespace kestrav
