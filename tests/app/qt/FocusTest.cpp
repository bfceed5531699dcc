#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/PushButtonOutlet.h"
#include "app/qt/StatusLine.h"
#include "app/reportOf.h"

namespace kestrav {
namespace {

/// Where the keyboard's focus is when the part that had it is disabled or hidden.
class Focus : public ::testing::Test {
  protected:
    Focus() {
        window_.panel().showReport(reportOf(UpdateEnding::refused));
        window_.panel().offerToSendAgain(true);
        window_.statusLine().showSentence("Refused: not today.");
        window_.activateWindow();
    }

    void SetUp() override { ASSERT_TRUE(QTest::qWaitForWindowActive(&window_)); }

    QPushButton& button(const char* name) { return *window_.findChild<QPushButton*>(name); }

    void expectNobodyHasIt() {
        EXPECT_EQ(window_.focusWidget(), nullptr) << window_.focusWidget()->objectName().toStdString();
    }

    MainWindow window_;
    PushButtonOutlet firmware_{button("firmwareBtn")};
    PushButtonOutlet icon_{button("iconBtn")};
};

TEST_F(Focus, LeavesTheButtonsWithoutFallingIntoTheLog) {
    for (const char* name : {"firmwareBtn", "iconBtn"}) {
        button(name).setFocus();
        firmware_.setEnabled(false);
        icon_.setEnabled(false);
        expectNobodyHasIt();
        firmware_.setEnabled(true);
        icon_.setEnabled(true);
        EXPECT_EQ(window_.focusWidget(), &button("firmwareBtn"));
    }
}

TEST_F(Focus, LeavesTheButtonForSendingAgainWhenThatGoes) {
    button("againBtn").setFocus();
    window_.panel().showWorking("Writing.", "", "");
    expectNobodyHasIt();
}

TEST_F(Focus, ComesBackToTheButtonForSendingAgain) {
    window_.panel().setSendAgain([&] {
        window_.panel().showWorking("Writing.", "", "");
        window_.panel().showReport(reportOf(UpdateEnding::refused));
        window_.panel().offerToSendAgain(true);
    });
    button("againBtn").click();
    EXPECT_EQ(window_.focusWidget(), &button("againBtn"));
}

TEST_F(Focus, LeavesTheServicesSentenceWhenThatGoes) {
    window_.statusLine().setFocus();
    window_.statusLine().clear();
    expectNobodyHasIt();
}

TEST_F(Focus, IsLeftToThePersonElsewhere) {
    window_.statusLine().setFocus();
    window_.panel().offerToSendAgain(false);
    firmware_.setEnabled(false);
    firmware_.setEnabled(true);
    EXPECT_EQ(window_.focusWidget(), &window_.statusLine());
}

}  // namespace
}  // namespace kestrav
