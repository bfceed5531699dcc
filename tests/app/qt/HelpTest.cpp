#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "app/qt/HelpButton.h"
#include "app/qt/HelpPage.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/ProgramResources.h"
#include "app/qt/StatusLine.h"
#include "app/qt/SupportText.h"
#include "app/reportOf.h"
#include "tests/TemporaryFolder.h"
#include "tests/app/everyEnding.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

class Help : public ::testing::Test {
  protected:
    static QString selected(const QStringList& sought) {
        HelpPage page(nullptr, "Help", ":/troubleshooting.md", sought);
        page.setAttribute(Qt::WA_DeleteOnClose, false);
        return page.browser().textCursor().selectedText();
    }

    static HelpButton& helpOf(const MainWindow& window) {
        return dynamic_cast<HelpButton&>(*window.findChild<QToolButton*>("helpBtn"));
    }

    /// A program that is asked with the word "doctor".
    QString doctor(const std::string& script) const {
        const std::filesystem::path path = folder_.path() / "kestravctl";
        std::ofstream(path) << "#!/bin/sh\n" << script;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return QString::fromStdString(path);
    }
    static QString gathered(SupportText& support) {
        QString gathered;
        support.gather("Shown.", "Happened.\n", [&](const QString& text) { gathered = text; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return !gathered.isEmpty(); }, 60'000));
        return gathered;
    }

    const ProgramResources resources_;
    TemporaryFolder folder_;
};

TEST_F(Help, OpensAtItsBeginningWhenNothingIsSought) {
    HelpPage page(nullptr, "Help", ":/troubleshooting.md");
    page.setAttribute(Qt::WA_DeleteOnClose, false);
    page.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
    EXPECT_EQ(page.browser().textCursor().position(), 0);
    EXPECT_EQ(page.browser().verticalScrollBar()->value(), 0);
    EXPECT_GT(page.browser().verticalScrollBar()->maximum(), 0);
}

TEST_F(Help, OpensAtTheSentenceThatIsShown) {
    EXPECT_EQ(selected({"Not written: the image is empty."}), "Not written: the image is empty.");
    EXPECT_EQ(selected({"Failed: nothing that is explained.", "Not written: the service refused."}),
              "Not written: the service refused.");
}

TEST_F(Help, OpensWhereTheBeginningOfASentenceIsExplained) {
    EXPECT_EQ(selected({"Loaded icon file: /home/anna/kestrav.fds with 100 bytes."}), "Loaded icon file:");
    EXPECT_EQ(selected({"Xyzzy plugh plover."}), "") << "the page opens at its beginning";
}

TEST_F(Help, ExplainsEachEndOfAnUpdate) {
    OutcomePanel panel;
    for (const UpdateEnding ending : kEveryEnding) {
        const Report& report = reportOf(ending);
        panel.showReport(report);
        EXPECT_EQ(panel.sentences(), QStringList(report.headline));
        EXPECT_EQ(selected(panel.sentences()), report.headline);
    }
}

TEST_F(Help, LooksForTheServicesOwnSentenceFirst) {
    OutcomePanel panel;
    panel.showReport(reportOf(UpdateEnding::refused));
    panel.statusLine().showSentence("Refused: nothing.");
    EXPECT_EQ(panel.sentences(), QStringList({"Refused: nothing.", "Not written: the service refused."}));
    panel.showReady();
    panel.statusLine().clear();
    EXPECT_EQ(panel.sentences(), QStringList());
}

TEST_F(Help, GathersWhatSomebodyWhoHelpsNeeds) {
    SupportText support(nullptr, doctor("echo \"asked for: $*\"; echo complaint >&2; exit 4"));
    const QString text = gathered(support);
    EXPECT_TRUE(text.startsWith("Kestrav ")) << text.toStdString();
    EXPECT_TRUE(
        text.contains("\n\nShown.\n\nWhat happened:\nHappened.\n\nkestravctl doctor:\nasked for: doctor\ncomplaint\n"))
        << text.toStdString();
}

TEST_F(Help, SaysThatThereIsNoDoctor) {
    SupportText support(nullptr, QString::fromStdString(folder_.path() / "missing"));
    EXPECT_TRUE(gathered(support).endsWith("kestravctl is not installed, or does not start.\n"));
}

TEST_F(Help, WaitsForNoDoctorThatNeverEnds) {
    SupportText support(nullptr, doctor("echo begun; exec sleep 600"), 1500ms);
    EXPECT_TRUE(gathered(support).endsWith("It did not come to an end.\n"));
}

TEST_F(Help, TakesNoMoreOfADoctorThanAPersonReads) {
    SupportText support(nullptr, doctor("exec yes"), 1500ms);
    EXPECT_LT(gathered(support).size(), 70'000);
}

TEST_F(Help, CopiesWhatTheWindowSaysAndWhatHappened) {
    MainWindow window;
    window.panel().showReport(reportOf(UpdateEnding::notRunning));
    window.supportRecord().answered("Refused: nobody.");
    QGuiApplication::clipboard()->clear();
    helpOf(window).copyForSupport();
    ASSERT_TRUE(QTest::qWaitFor([] { return !QGuiApplication::clipboard()->text().isEmpty(); }, 60'000));
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(copied.contains("Not written: the service is not running."));
    EXPECT_TRUE(copied.contains("answer Refused: nobody.\n"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.findChild<QMessageBox*>() != nullptr; }, 60'000));
    EXPECT_EQ(window.findChild<QMessageBox*>()->text(), "Everything is on the clipboard.");
}

TEST_F(Help, SaysWhatTheProgramIsMadeOf) {
    MainWindow window;
    helpOf(window).showAbout();
    auto* about = window.findChild<QMessageBox*>();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->text().startsWith("Kestrav "));
    for (QAbstractButton* button : about->buttons()) {
        if (about->buttonRole(button) == QMessageBox::ActionRole) button->click();
    }
    const auto* licences = window.findChild<QTextBrowser*>();
    ASSERT_NE(licences, nullptr);
    EXPECT_TRUE(licences->toPlainText().contains("LGPL"));
}

TEST_F(Help, ComesWithAKey) {
    MainWindow window;
    HelpButton& help = helpOf(window);
    EXPECT_EQ(help.menuOfPages().actions().first()->shortcut(), QKeySequence(QKeySequence::HelpContents));
    help.menuOfPages().actions().first()->trigger();
    EXPECT_NE(window.findChild<QTextBrowser*>(), nullptr);
    help.click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return help.menuOfPages().isVisible(); }, 60'000));
}

}  // namespace
}  // namespace kestrav
