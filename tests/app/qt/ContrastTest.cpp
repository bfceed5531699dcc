#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>

#include "app/qt/AccessoryLine.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/discernible.h"

namespace kestrav {
namespace {

constexpr double kSeen = 3;

struct Theme {
    const char* name;
    const char* window;
    const char* text;
    const char* button;
    bool ofHighContrast;
};

/// The window's parts in pictures, in a theme that came up while the window was open.
class Contrast : public ::testing::TestWithParam<Theme> {
  protected:
    Contrast() {
        QApplication::setPalette(paletteOf(GetParam()));
        QCoreApplication::processEvents();
    }
    ~Contrast() override { QApplication::setPalette(before_); }

    static QPalette paletteOf(const Theme& theme) {
        QPalette palette(QColor(theme.button), QColor(theme.window));
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            for (const auto group : {QPalette::Active, QPalette::Inactive})
                palette.setColor(group, role, QColor(theme.text));
        palette.setColor(QPalette::Base, QColor(theme.window));
        return palette;
    }

    QPushButton& firmwareButton() { return *window_.findChild<QPushButton*>("firmwareBtn"); }

    QWidget& log() {
        for (auto* text : window_.findChildren<QPlainTextEdit*>())
            if (dynamic_cast<LogTextEdit*>(text) != nullptr) return *text;
        throw std::runtime_error("there is no log");
    }

    /// How far the middle of a part's upper edge stands out from the window.
    double edgeOf(QWidget& part) const {
        const QImage picture = part.grab().toImage();
        return contrastBetween(picture.pixelColor(picture.width() / 2, 0), window_.palette().color(QPalette::Window));
    }

    /// The most that any point within an area stands out from a background.
    static double mostWithin(const QImage& picture, const QRect& area, const QColor& background) {
        double most = 1;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                most = std::max(most, contrastBetween(picture.pixelColor(x, y), background));
        return most;
    }

    QPalette before_ = QApplication::palette();
    MainWindow window_;
};

TEST_P(Contrast, IsTakenForWhatItIs) {
    EXPECT_EQ(isOfHighContrast(window_.palette()), GetParam().ofHighContrast);
}

TEST_P(Contrast, ShowsThePanelsBorder) {
    EXPECT_GE(edgeOf(window_.panel()), kSeen);
}

TEST_P(Contrast, ShowsTheIndicatorsTrackAndWhatRunsOnIt) {
    auto& bar = *window_.findChild<QProgressBar*>();
    bar.show();
    bar.resize(200, 8);
    EXPECT_GE(edgeOf(bar), kSeen);
    const QImage picture = bar.grab().toImage();
    EXPECT_GE(mostWithin(picture, picture.rect().adjusted(2, 2, -2, -2), bar.palette().color(QPalette::Base)), kSeen);
}

TEST_P(Contrast, ShowsTheAccessorysSignWhereNoneIsPluggedIn) {
    window_.accessoryLine().showAccessories(std::vector<UsbDevice>());
    const QImage picture = window_.accessoryLine().grab().toImage();
    EXPECT_GE(mostWithin(picture, QRect(0, 0, 12, picture.height()), window_.palette().color(QPalette::Window)), kSeen);
}

TEST_P(Contrast, ShowsACaptionThatIsDisabled) {
    firmwareButton().setEnabled(false);
    const QPalette& palette = firmwareButton().palette();
    const QColor caption = palette.color(QPalette::Disabled, QPalette::ButtonText);
    EXPECT_GE(contrastBetween(caption, palette.color(QPalette::Disabled, QPalette::Button)), kSeen);
    EXPECT_LT(contrastBetween(caption, palette.color(QPalette::Disabled, QPalette::Button)),
              contrastBetween(palette.color(QPalette::Active, QPalette::ButtonText),
                              palette.color(QPalette::Active, QPalette::Button)))
        << "a disabled caption has to look other than an enabled one";
    const QImage picture = firmwareButton().grab().toImage();
    const QColor background = picture.pixelColor(picture.width() / 2, 3);
    // Letters are smoothed: hardly a point has the whole colour, least of all light ones.
    EXPECT_GE(mostWithin(picture, picture.rect().adjusted(6, 5, -6, -5), background), kSeen - 1);
}

TEST_P(Contrast, ShowsBordersWhereColoursAreBlackAndWhite) {
    if (!GetParam().ofHighContrast) {
        EXPECT_FALSE(isOfHighContrast(window_.palette()));
        return;
    }
    EXPECT_GE(edgeOf(firmwareButton()), kSeen);
    EXPECT_GE(edgeOf(log()), kSeen);
    firmwareButton().setEnabled(false);
    EXPECT_GE(edgeOf(firmwareButton()), kSeen);
}

TEST_P(Contrast, FollowsAThemeThatChanges) {
    const Theme black{"", "#000000", "#ffffff", "#000000", true};
    QApplication::setPalette(paletteOf(black));
    QCoreApplication::processEvents();
    EXPECT_GE(edgeOf(window_.panel()), kSeen);
    EXPECT_GE(edgeOf(firmwareButton()), kSeen);
    EXPECT_GE(edgeOf(log()), kSeen);
    const QPalette& palette = firmwareButton().palette();
    EXPECT_EQ(palette.color(QPalette::Active, QPalette::ButtonText), QColor("#ffffff"));
    EXPECT_GE(contrastBetween(palette.color(QPalette::Disabled, QPalette::ButtonText), QColor("#000000")), kSeen);
}

INSTANTIATE_TEST_SUITE_P(Themes, Contrast,
                         ::testing::Values(Theme{"light", "#efefef", "#000000", "#efefef", false},
                                           Theme{"dark", "#2a2e32", "#eff0f1", "#31363b", false},
                                           Theme{"black", "#000000", "#ffffff", "#000000", true},
                                           Theme{"white", "#ffffff", "#000000", "#ffffff", true}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Discernible, LeavesAloneWhatIsSeen) {
    EXPECT_EQ(discernible(QColor("#b3261e"), Qt::white, Qt::black), QColor("#b3261e"));
    EXPECT_NEAR(contrastBetween(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(contrastBetween(Qt::white, Qt::white), 1, 0.01);
}

}  // namespace
}  // namespace kestrav
