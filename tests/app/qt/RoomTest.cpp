#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTranslator>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/qt/AccessoryLine.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/MainWindow.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/StatusLine.h"
#include "app/qt/installTranslations.h"
#include "app/reportOf.h"
#include "tests/app/everyEnding.h"

namespace kestrav {
namespace {

constexpr const char* kShortSentence = "Refused: the disk sdzz is write-protected.";
constexpr const char* kLongSentence =
    "Refused: the image has 16777216 bytes, but sdzz has room for 15990784 from block 1536 on. Nothing was written.";

/// What the window holds beside each other after every ending, in a language, in the usual font or a larger one.
class Room : public ::testing::Test, public ::testing::WithParamInterface<const char*> {
  protected:
    ~Room() override {
        for (QTranslator* translator : QCoreApplication::instance()->findChildren<QTranslator*>())
            delete translator;
        QLocale::setDefault(locale_);
        QApplication::setFont(font_);
    }

    static void speak(const QString& language) {
        QLocale::setDefault(QLocale(language));
        installTranslations();
    }

    /// A fresh window after an ending; the log has more lines than it can show.
    static void showEnding(MainWindow& window, UpdateEnding ending, const char* sentence) {
        window.accessoryLine().showAccessories(
            std::vector<UsbDevice>{{.name = "Kestrav Accessory", .disk = "sdzz", .serial = "0123456789AB"}});
        for (int line = 1; line <= 30; ++line)
            log(window).append("A line of the log.\r\n");
        window.panel().showReport(reportOf(ending));
        window.panel().offerToSendAgain(true);
        window.statusLine().showSentence(sentence);
        log(window).scrollToEnd();
        settle();
    }

    static void settle() {
        for (int round = 0; round < 5; ++round)
            QCoreApplication::processEvents();
    }

    static LogTextEdit& log(MainWindow& window) {
        for (auto* text : window.findChildren<QPlainTextEdit*>())
            if (auto* log = dynamic_cast<LogTextEdit*>(text)) return *log;
        throw std::runtime_error("there is no log");
    }

    static double logLines(MainWindow& window) {
        const QPlainTextEdit& text = log(window);
        return (text.viewport()->height() - text.document()->documentMargin()) / text.fontMetrics().lineSpacing();
    }

    static void expectWhole(MainWindow& window) {
        for (const QLabel* label : window.panel().findChildren<QLabel*>()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
        }
        for (const QPushButton* button : window.findChildren<QPushButton*>()) {
            if (!button->isVisible()) continue;
            EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
            EXPECT_GE(button->height(), button->sizeHint().height()) << button->text().toStdString();
        }
        EXPECT_GE(window.accessoryLine().height(), window.accessoryLine().fontMetrics().height());
        EXPECT_TRUE(window.rect().contains(window.panel().geometry()));
        EXPECT_EQ(log(window).verticalScrollBar()->value(), log(window).verticalScrollBar()->maximum());
    }

  private:
    QLocale locale_;
    QFont font_ = QApplication::font();
};

TEST_P(Room, IsThereForEveryEndingAndTheServicesSentence) {
    speak(GetParam());
    for (const UpdateEnding ending : kEveryEnding) {
        for (const char* sentence : {"", kShortSentence}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(ending)) + ' ' + sentence);
            MainWindow window;
            showEnding(window, ending, sentence);
            EXPECT_EQ(window.size(), QSize(480, 270));
            EXPECT_GE(logLines(window), 4);
            expectWhole(window);
        }
    }
}

TEST_P(Room, IsMadeForALongSentence) {
    speak(GetParam());
    for (const UpdateEnding ending : kEveryEnding) {
        SCOPED_TRACE(static_cast<int>(ending));
        MainWindow window;
        showEnding(window, ending, kLongSentence);
        // The window grows rather than that something is cut off; in English it need not.
        EXPECT_LE(window.height(), QLatin1String(GetParam()) == QLatin1String("C") ? 270 : 300);
        EXPECT_GE(logLines(window), 4);
        expectWhole(window);
    }
}

TEST_P(Room, IsMadeForLettersOf22Points) {
    speak(GetParam());
    QFont large = QApplication::font();
    large.setPointSize(22);
    QApplication::setFont(large);
    for (const UpdateEnding ending : kEveryEnding) {
        SCOPED_TRACE(static_cast<int>(ending));
        MainWindow window;
        showEnding(window, ending, kLongSentence);
        EXPECT_GE(logLines(window), 4);
        expectWhole(window);
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, Room, ::testing::Values("C", "de", "fr", "es", "ja", "ar"),
                         [](const auto& tested) { return std::string(tested.param); });

}  // namespace
}  // namespace kestrav
