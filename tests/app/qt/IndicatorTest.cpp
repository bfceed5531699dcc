#include <QImage>
#include <QProxyStyle>
#include <QStandardPaths>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/qt/ActivityBar.h"
#include "app/qt/prefersStillness.h"
#include "tests/app/qt/PaintCounter.h"
#include "tests/app/qt/WindowOnFakes.h"

namespace kestrav {
namespace {

/// The bar that moves while an update runs.
class Indicator : public WindowOnFakes {};

TEST_F(Indicator, ShowsTheIndicatorForTheLengthOfTheWork) {
    EXPECT_FALSE(bar().isVisible());
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    EXPECT_TRUE(bar().isVisible());
    EXPECT_EQ(bar().maximum(), 0);
    controller_->loaderBar()->stopAnimation(*controller_->processIconBtn());
    EXPECT_FALSE(bar().isVisible());
}

TEST_F(Indicator, MovesTheIndicatorWhileItIsShown) {
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    const QImage before = bar().grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().grab().toImage() != before; }));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    // Taking a picture paints, too; nothing else may be needed for the bar to do so.
    PaintCounter counter(bar());
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter.count > 3; }));
}

/// A style for people whom motion makes ill.
class StillStyle final : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
    }
};

TEST_F(Indicator, KeepsTheIndicatorStillForWhoeverWantsThat) {
    StillStyle still;
    bar().setStyle(&still);
    controller_->loaderBar()->startAnimation(*controller_->processIconBtn());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    EXPECT_TRUE(bar().isVisible());
    const QImage before = bar().grab().toImage();
    PaintCounter counter(bar());
    // As long as another one takes for ten steps on its way.
    ActivityBar moving;
    moving.show();
    PaintCounter steps(moving);
    EXPECT_TRUE(QTest::qWaitFor([&] { return steps.count > 10; }, 30000));
    EXPECT_LE(counter.count, 1);
    EXPECT_EQ(bar().grab().toImage(), before);
    bar().setStyle(nullptr);
}

TEST_F(Indicator, KeepsTheIndicatorStillWhereTheDesktopsSettingsSaySo) {
    const QString settings = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/kdeglobals";
    EXPECT_FALSE(prefersStillness(bar()));
    std::ofstream(settings.toStdString()) << "[KDE]\nAnimationDurationFactor=0\n";
    EXPECT_TRUE(prefersStillness(bar()));
    std::filesystem::remove(settings.toStdString());
}

}  // namespace
}  // namespace kestrav
