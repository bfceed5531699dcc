#include <cerrno>
#include <gtest/gtest.h>

#include "base/openSystemBus.h"
#include "base/systemProblem.h"

namespace kestrav {
namespace {

TEST(SystemProblem, HasTheSystemsWordsAndItsError) {
    const Problem problem = systemProblem("The file x can't be written", ENOSPC);
    EXPECT_EQ(problem.kind, Problem::Kind::failed);
    EXPECT_EQ(problem.sentence, "The file x can't be written: No space left on device.");
    EXPECT_EQ(problem.cause, std::errc::no_space_on_device);
}

TEST(SystemProblem, IsTheWordsAloneWhereNothingElseIsSaid) {
    EXPECT_EQ(systemProblem(EIO).sentence, "Input/output error.");
    EXPECT_EQ(systemProblem(EIO).cause, std::errc::io_error);
}

TEST(SystemProblem, TakesTheErrorOfTheCallBefore) {
    errno = EACCES;
    EXPECT_EQ(systemProblem("No").cause, std::errc::permission_denied);
}

TEST(OpenSystemBus, SaysWhyItCannotBeReached) {
    const auto bus = openSystemBus("unix:path=/nowhere/bus");
    ASSERT_FALSE(bus);
    EXPECT_EQ(bus.problem().sentence, "The message bus can't be reached: No such file or directory.");
    EXPECT_EQ(bus.problem().cause, std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace kestrav
