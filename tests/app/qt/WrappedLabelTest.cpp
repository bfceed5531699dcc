#include <QFont>
#include <gtest/gtest.h>

#include "app/qt/WrappedLabel.h"

namespace kestrav {
namespace {

constexpr int kWidth = 200;

TEST(WrappedLabel, IsAsHighAsItsTextNeedsAtTheWidth) {
    WrappedLabel label;
    label.setText("Choose an image with one of the buttons, or drop it onto one of them.");
    const int narrow = label.heightForWidth(kWidth);
    EXPECT_GT(narrow, label.heightForWidth(5 * kWidth));
    EXPECT_EQ(label.heightForWidth(kWidth), narrow);
}

TEST(WrappedLabel, TakesAnotherHeightForAnotherText) {
    WrappedLabel label;
    label.setText("short");
    const int before = label.heightForWidth(kWidth);
    label.setText("Choose an image with one of the buttons, or drop it onto one of them.");
    EXPECT_GT(label.heightForWidth(kWidth), before);
    label.setText("short");
    EXPECT_EQ(label.heightForWidth(kWidth), before);
}

TEST(WrappedLabel, TakesAnotherHeightForAnotherFont) {
    WrappedLabel label;
    label.setText("Choose an image with one of the buttons.");
    const int before = label.heightForWidth(kWidth);
    QFont large = label.font();
    large.setPointSizeF(large.pointSizeF() * 2);
    label.setFont(large);
    EXPECT_GT(label.heightForWidth(kWidth), before);
}

}  // namespace
}  // namespace kestrav
