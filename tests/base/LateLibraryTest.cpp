#include <cmath>
#include <gtest/gtest.h>

#include "base/late/LateLibrary.h"

namespace kestrav {
namespace {

using testing::ExitedWithCode;

TEST(LateLibrary, FindsAFunctionOfTheLibrary) {
    constexpr LateLibrary kMathematics("libm.so.6");
    EXPECT_EQ(kMathematics.function<double(double)>("trunc")(2.5), 2.0);
}

TEST(LateLibraryDeathTest, EndsAsTheLoaderDoesWhereTheLibraryIsMissing) {
    constexpr LateLibrary kNone("libkestrav-none.so.7");
    EXPECT_EXIT(kNone.function<void()>("anything"), ExitedWithCode(127),
                "^base_test: error while loading shared libraries: libkestrav-none.so.7: cannot open shared object "
                "file: .*. Install the package of that library.\n$");
}

TEST(LateLibraryDeathTest, EndsSoWhereTheFunctionIsMissing) {
    constexpr LateLibrary kMathematics("libm.so.6");
    EXPECT_EXIT(kMathematics.function<void()>("no_such_function"), ExitedWithCode(127),
                "undefined symbol: no_such_function");
}

}  // namespace
}  // namespace kestrav
