#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "socket/Result.h"
#include "socket/SocketError.h"

namespace kestrav {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

struct Case {
    SocketError error;
    const char* name;
};

class Description : public ::testing::TestWithParam<Case> {};

TEST_P(Description, IsOneSentenceThatNamesTheCase) {
    const std::string text = description(GetParam().error);
    EXPECT_THAT(text, StartsWith(std::string("SocketError.") + GetParam().name + ": "));
    EXPECT_THAT(text, EndsWith("."));
    EXPECT_EQ(text.find_first_of("\r\n%"), std::string::npos);
    EXPECT_EQ(SocketException(GetParam().error).what(), text);
    EXPECT_EQ(SocketException(GetParam().error).error(), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Cases, Description,
                         ::testing::Values(Case{SocketError::queryFailed, "queryFailed"},
                                           Case{SocketError::connectionClosed, "connectionClosed"},
                                           Case{SocketError::connectionTimeout, "connectionTimeout"},
                                           Case{SocketError::unknownError, "unknownError"}));

TEST(SocketError, KeepsTheOrderOfItsCases) {
    EXPECT_LT(SocketError::queryFailed, SocketError::connectionClosed);
    EXPECT_LT(SocketError::connectionClosed, SocketError::connectionTimeout);
    EXPECT_LT(SocketError::connectionTimeout, SocketError::unknownError);
}

TEST(Result, IsASuccessWithoutAnError) {
    const Result result = Result::success();
    EXPECT_TRUE(result.isSuccess());
    EXPECT_FALSE(result.isFailure());
    EXPECT_EQ(result.error(), nullptr);
}

TEST(Result, IsAFailureThatCarriesItsError) {
    const Result result = Result::failure(std::make_exception_ptr(SocketException(SocketError::queryFailed)));
    EXPECT_TRUE(result.isFailure());
    EXPECT_FALSE(result.isSuccess());
    EXPECT_THROW(std::rethrow_exception(result.error()), SocketException);
}

TEST(ResultDeathTest, DoesNotTakeAFailureWithoutAnError) {
    EXPECT_EXIT(Result::failure(nullptr), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrav
