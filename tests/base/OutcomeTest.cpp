#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

#include "base/Outcome.h"
#include "base/retry.h"

namespace kestrav {
namespace {

TEST(Outcome, HasEitherAValueOrAProblem) {
    const Outcome<int> value(7);
    ASSERT_TRUE(value);
    EXPECT_EQ(value.value(), 7);
    EXPECT_THROW(static_cast<void>(value.problem()), std::bad_variant_access);

    const Outcome<int> problem(refused("no."));
    ASSERT_FALSE(problem);
    EXPECT_EQ(problem.problem().kind, Problem::Kind::refused);
    EXPECT_EQ(problem.problem().sentence, "no.");
    EXPECT_THROW(static_cast<void>(problem.value()), std::bad_variant_access);
}

TEST(Outcome, TellsTheSystemsErrorWhereThereIsOne) {
    EXPECT_FALSE(failed("no.").cause);
    EXPECT_EQ(failed("no.", std::make_error_code(std::errc::no_space_on_device)).cause, std::errc::no_space_on_device);
}

TEST(Outcome, GivesItsValueAway) {
    Outcome<std::unique_ptr<int>> outcome(std::make_unique<int>(3));
    EXPECT_EQ(*std::move(outcome.value()), 3);
}

TEST(OutcomeOfNothing, IsDoneOrHasAProblem) {
    const Outcome<void> done;
    EXPECT_TRUE(done);
    EXPECT_THROW(static_cast<void>(done.problem()), std::bad_variant_access);
    const Outcome<void> problem(failed("half of it."));
    ASSERT_FALSE(problem);
    EXPECT_EQ(problem.problem().sentence, "half of it.");
}

TEST(Retry, RepeatsOnlyWhatASignalInterrupted) {
    int calls = 0;
    EXPECT_EQ(retry([&] {
                  errno = EINTR;
                  return ++calls < 3 ? -1 : 5;
              }),
              5);
    EXPECT_EQ(calls, 3);
    calls = 0;
    EXPECT_EQ(retry([&] {
                  ++calls;
                  errno = EIO;
                  return -1;
              }),
              -1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(errno, EIO);
}

}  // namespace
}  // namespace kestrav
