#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <vector>

#include "app/qt/ActivityBar.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/StatusLine.h"
#include "app/reportOf.h"

namespace kestrav {
namespace {

class ThePanel : public ::testing::Test {
  protected:
    ThePanel() {
        panel_.resize(460, 100);
        panel_.show();
    }
    OutcomeSign& signWidget() const {
        for (QWidget* widget : panel_.findChildren<QWidget*>())
            if (auto* sign = dynamic_cast<OutcomeSign*>(widget)) return *sign;
        throw std::runtime_error("there is no sign");
    }
    QPushButton& again() const { return *panel_.findChild<QPushButton*>("againBtn"); }

    OutcomePanel panel_;
};

TEST_F(ThePanel, SaysAtFirstThatNothingWasSent) {
    EXPECT_EQ(signWidget().kind(), OutcomeSign::Kind::ready);
    EXPECT_EQ(panel_.words(), "Nothing has been sent yet. Choose an image with one of the buttons.");
    EXPECT_FALSE(panel_.statusLine().isVisible());
}

TEST_F(ThePanel, ShowsEachKindWithASignOfItsOwn) {
    std::vector<QImage> pictures;
    for (const UpdateEnding ending :
         {UpdateEnding::firmwareArrived, UpdateEnding::refused, UpdateEnding::halfAnAnswer}) {
        panel_.showReport(reportOf(ending));
        EXPECT_EQ(panel_.words(), QString(reportOf(ending).headline) + ' ' + reportOf(ending).remedy);
        // Without any colour: the shapes have to differ.
        pictures.push_back(signWidget().grab().toImage().convertToFormat(QImage::Format_Mono));
    }
    EXPECT_NE(pictures[0], pictures[1]);
    EXPECT_NE(pictures[1], pictures[2]);
    EXPECT_NE(pictures[0], pictures[2]);
}

TEST_F(ThePanel, OffersToSendAgainOnlyWhereThatMakesSense) {
    int pressed = 0;
    panel_.setSendAgain([&] { ++pressed; });
    panel_.showReport(reportOf(UpdateEnding::firmwareArrived));
    panel_.offerToSendAgain(true);
    EXPECT_FALSE(again().isVisible());
    panel_.showReport(reportOf(UpdateEnding::unpluggedInTheMiddle));
    panel_.offerToSendAgain(false);
    EXPECT_FALSE(again().isVisible()) << "the accessory is not there yet";
    panel_.offerToSendAgain(true);
    EXPECT_TRUE(again().isVisible());
    again().click();
    EXPECT_EQ(pressed, 1);
    panel_.showWorking("Writing.", "", "");
    EXPECT_FALSE(again().isVisible());
}

TEST_F(ThePanel, ShowsTheServicesSentenceAsTextThatCanBeSelected) {
    panel_.showReport(reportOf(UpdateEnding::refused));
    panel_.statusLine().showSentence("Refused: <b>no</b>.");
    EXPECT_TRUE(panel_.statusLine().isVisible());
    EXPECT_EQ(panel_.statusLine().toPlainText(), "Refused: <b>no</b>.");
    EXPECT_TRUE(panel_.statusLine().textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    panel_.statusLine().clear();
    EXPECT_FALSE(panel_.statusLine().isVisible());
}

TEST_F(ThePanel, ShowsNoWordsAsMarkup) {
    for (const QLabel* label : panel_.findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(ThePanel, IsANotificationForAScreenReader) {
    const auto* interface = QAccessible::queryAccessibleInterface(&panel_);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::Notification);
    panel_.showReport(reportOf(UpdateEnding::serviceGone));
    EXPECT_EQ(interface->text(QAccessible::Name), panel_.words());
}

// The screen in memory has no readers; what a real one hears is looked at in the window's own cases.
TEST_F(ThePanel, AnnouncesOnceWhatHasStoodForAMoment) {
    auto& announcement = *panel_.findChild<QTimer*>("announcement");
    const QSignalSpy announced(&announcement, &QTimer::timeout);
    panel_.showWorking("Asking.", "", "Wait.");
    panel_.showWorking("Writing.", "1 %", "Wait.");
    panel_.showReport(reportOf(UpdateEnding::serviceGone));
    EXPECT_TRUE(announcement.isActive());
    EXPECT_EQ(announced.count(), 0) << "the focus that comes back would break it off";
    ASSERT_TRUE(QTest::qWaitFor([&] { return announced.count() > 0; }, 20'000));
    EXPECT_EQ(announced.count(), 1);
    EXPECT_FALSE(announcement.isActive());
}

TEST_F(ThePanel, AnnouncesNoNumbers) {
    auto& announcement = *panel_.findChild<QTimer*>("announcement");
    panel_.showWorking("Writing.", "1 %", "Wait.");
    announcement.stop();
    panel_.showWorking("Writing.", "2 %", "Wait.");
    EXPECT_FALSE(announcement.isActive());
    panel_.showWorking("Checking.", "2 %", "Wait.");
    EXPECT_TRUE(announcement.isActive());
}

}  // namespace
}  // namespace kestrav
