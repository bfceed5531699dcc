#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTranslator>
#include <functional>
#include <gtest/gtest.h>
#include <string_view>

#include "app/ApplicationError.h"
#include "app/qt/MessageBoxes.h"
#include "app/qt/ProgramResources.h"
#include "base/systemProblem.h"

namespace kestrav {
namespace {

class Boxes : public ::testing::Test {
  protected:
    /// Does `answer` to the box that comes up next.
    static void onceShown(std::function<void(QMessageBox&)> answer) {
        QTimer::singleShot(0, [answer = std::move(answer)] {
            auto* box = dynamic_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            answer(*box);
            if (box->isVisible()) box->reject();
        });
    }
    static std::function<void(QMessageBox&)> pressing(const QString& title) {
        return [title](QMessageBox& box) {
            for (QAbstractButton* button : box.buttons()) {
                if (button->text() == title) button->click();
            }
        };
    }

    QWidget window_;
    MessageBoxes boxes_{window_};
    const Alert question_{"Quit <b>anyway</b>?", "<i>Really</i>", {"Quit anyway", "Cancel"}};
};

TEST_F(Boxes, NumberTheButtonsInTheirOrder) {
    onceShown(pressing("Quit anyway"));
    EXPECT_EQ(boxes_.runModal(question_), 1000);
    onceShown(pressing("Cancel"));
    EXPECT_EQ(boxes_.runModal(question_), 1001);
}

TEST_F(Boxes, TakeDismissingForTheLastButton) {
    onceShown([](QMessageBox& box) { box.close(); });
    EXPECT_EQ(boxes_.runModal(question_), 1001);
}

TEST_F(Boxes, ShowTextsAsTheyAre) {
    onceShown([](QMessageBox& box) {
        EXPECT_EQ(box.text(), "Quit <b>anyway</b>?");
        EXPECT_EQ(box.informativeText(), "<i>Really</i>");
        int labels = 0;
        for (const QLabel* label : box.findChildren<QLabel*>()) {
            if (label->text().isEmpty()) continue;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            ++labels;
        }
        EXPECT_EQ(labels, 2);
    });
    boxes_.runModal(question_);
}

TEST_F(Boxes, HaveOneButtonWhereNoneIsGiven) {
    onceShown([](QMessageBox& box) {
        ASSERT_EQ(box.buttons().size(), 1);
        box.buttons().first()->click();
    });
    EXPECT_EQ(boxes_.runModal({"Authorization failure: x", {}, {}}), 1000);
}

TEST_F(Boxes, ShowWhatWentWrongAndWhy) {
    ApplicationError error{"D", 1, "It failed", "Because of the reason.", nullptr};
    error.underlying = std::make_shared<const ApplicationError>(applicationError(systemProblem("Could not do it", 13)));
    onceShown([](QMessageBox& box) {
        EXPECT_EQ(box.text(), "It failed");
        EXPECT_EQ(box.informativeText(), "Because of the reason.\n\nCould not do it: Permission denied.");
    });
    EXPECT_FALSE(boxes_.presentError(error));
}

/// Knows one text, by its context and its comment alone.
class OneTranslation final : public QTranslator {
  public:
    QString translate(const char* context, const char* text, const char* comment, int /*n*/) const override {
        const bool known = std::string_view(context) == "here" && std::string_view(text) == "Cancel" &&
                           comment != nullptr && std::string_view(comment) == "Cancel button title";
        return known ? QStringLiteral("Abbrechen") : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST_F(Boxes, TranslateByContextAndComment) {
    OneTranslation translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(boxes_.translate("here", "Cancel", "Cancel button title"), "Abbrechen");
    EXPECT_EQ(boxes_.translate("here", "Cancel", "another"), "Cancel");
    EXPECT_EQ(boxes_.translate("there", "Cancel", "Cancel button title"), "Cancel");
}

TEST(ProgramResources, HoldTheModel) {
    const ProgramResources resources;
    EXPECT_TRUE(resources.resource("Kestrav", "momd").value().find("<model name=\"Kestrav\"/>") != std::string::npos);
    EXPECT_EQ(resources.resource("Other", "momd"), std::nullopt);
}

}  // namespace
}  // namespace kestrav
