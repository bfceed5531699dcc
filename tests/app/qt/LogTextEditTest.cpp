#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTextBlock>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

#include "app/qt/LogTextEdit.h"
#include "app/qt/saveTextAs.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

std::string shown(const LogTextEdit& log) {
    return log.toPlainText().toStdString();
}

std::string copied(LogTextEdit& log) {
    QGuiApplication::clipboard()->clear();
    log.copy();
    return QGuiApplication::clipboard()->text().toStdString();
}

void select(LogTextEdit& log, int from, int to) {
    QTextCursor cursor(log.document());
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    log.setTextCursor(cursor);
}

TEST(LogTextEdit, HoldsEveryLineWithItsEnd) {
    LogTextEdit log;
    EXPECT_EQ(log.content(), "");
    log.append("a\r\n");
    log.append("\r\n");
    log.append("b\r\n");
    EXPECT_EQ(log.content(), "a\r\n\r\nb\r\n");
    EXPECT_EQ(shown(log), "a\n\nb\n");
}

TEST(LogTextEdit, TakesWhatIsNotAWholeLine) {
    LogTextEdit log;
    log.append("");
    log.append("a");
    log.append("b\r\nc\r\nd");
    EXPECT_EQ(log.content(), "ab\r\nc\r\nd");
    EXPECT_EQ(shown(log), "ab\nc\nd");
}

TEST(LogTextEdit, CannotBeChangedByThePerson) {
    LogTextEdit log;
    log.append("a\r\n");
    EXPECT_TRUE(log.isReadOnly());
    EXPECT_FALSE(log.isUndoRedoEnabled());
    log.paste();
    EXPECT_EQ(log.content(), "a\r\n");
}

TEST(LogTextEdit, ShowsMarkupAndPercentSignsAsTheyAre) {
    LogTextEdit log;
    log.append("<b>100 %s</b>\r\n");
    EXPECT_EQ(shown(log), "<b>100 %s</b>\n");
}

TEST(LogTextEdit, GivesControlCharactersPicturesInsteadOfEffects) {
    LogTextEdit log;
    const std::string hostile = "/x\nFinished\r\x1b[2J\x7f\t\xe2\x80\xa9z";
    log.append(hostile + "\r\n");
    EXPECT_EQ(log.document()->blockCount(), 2);
    EXPECT_EQ(shown(log), "/x\u240aFinished\u240d\u241b[2J\u2421\t\u2424z\n");
    EXPECT_EQ(log.content(), hostile + "\r\n");
    log.selectAll();
    EXPECT_EQ(copied(log), hostile + "\r\n");
}

TEST(LogTextEdit, ShowsTheUpperControlCharactersAsLeftOut) {
    LogTextEdit log;
    log.append("a\u009b2J\u0085b\r\n");
    EXPECT_EQ(shown(log), "a\u24262J\u2426b\n");
}

TEST(LogTextEdit, TurnsNoDirectionAndHidesNothing) {
    LogTextEdit log;
    const std::string name = "gnp\u202e.fds \u061c\u200e\u2066\u2069 \ufeff\u200b\U000e0041";
    log.append(name);
    EXPECT_EQ(shown(log), "gnp\u2426.fds \u2426\u2426\u2426\u2426 \u2426\u2426\u2426\u2426");
    EXPECT_EQ(log.content(), name);
    log.selectAll();
    EXPECT_EQ(copied(log), name);
}

TEST(LogTextEdit, ShowsWholeScriptsAsTheyAre) {
    LogTextEdit log;
    log.append("\u0645\u06cc\u200c\u062e \U0001f4c0");
    EXPECT_EQ(shown(log), "\u0645\u06cc\u200c\u062e \U0001f4c0");
}

TEST(LogTextEdit, CopiesTheContentOfASelection) {
    LogTextEdit log;
    log.append("first\r\n\r\nth\u00fcrd \U0001F600!\r\n");
    select(log, 2, 4);
    EXPECT_EQ(copied(log), "rs");
    select(log, 4, 9);
    EXPECT_EQ(copied(log), "t\r\n\r\nth");
    select(log, 9, 6);
    EXPECT_EQ(copied(log), "\r\nth");
    log.selectAll();
    EXPECT_EQ(copied(log), log.content());
}

TEST(LogTextEdit, ScrollsToItsNewestLine) {
    LogTextEdit log;
    log.resize(300, 100);
    log.show();
    for (int line = 0; line < 200; ++line) {
        log.append("line\r\n");
        log.scrollToEnd();
    }
    EXPECT_GT(log.verticalScrollBar()->maximum(), 100);
    EXPECT_EQ(log.verticalScrollBar()->value(), log.verticalScrollBar()->maximum());
}

TEST(LogTextEdit, KeepsTheNewestLineInSightWhenItGetsSmaller) {
    LogTextEdit log;
    log.resize(300, 200);
    log.show();
    for (int line = 0; line < 200; ++line)
        log.append("line\r\n");
    log.scrollToEnd();
    log.resize(300, 100);
    EXPECT_EQ(log.verticalScrollBar()->value(), log.verticalScrollBar()->maximum());
    log.verticalScrollBar()->setValue(20);
    log.resize(300, 80);
    EXPECT_EQ(log.verticalScrollBar()->value(), 20) << "whoever reads further up is left there";
}

TEST(LogTextEdit, SavesItsContentByteForByte) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "log";
    LogTextEdit log;
    log.append("a\r\n\xff\n\r\n");
    EXPECT_TRUE(writeTextFile(QString::fromStdString(file), log.content()));
    std::ostringstream saved;
    saved << std::ifstream(file).rdbuf();
    EXPECT_EQ(saved.str(), "a\r\n\xff\n\r\n");
}

TEST(LogTextEdit, SaysWhenItCannotBeSaved) {
    const TemporaryFolder folder;
    const LogTextEdit log;
    EXPECT_FALSE(writeTextFile(QString::fromStdString(folder.path() / "missing" / "log"), log.content()));
    EXPECT_FALSE(writeTextFile(QString::fromStdString(folder.path()), log.content()));
}

}  // namespace
}  // namespace kestrav
