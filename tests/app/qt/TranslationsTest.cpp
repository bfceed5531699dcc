#include <QCoreApplication>
#include <QLocale>
#include <QPushButton>
#include <QTranslator>
#include <gtest/gtest.h>

#include "app/qt/MainWindow.h"
#include "app/qt/installTranslations.h"

namespace kestrav {
namespace {

/// The window in another language; the language before is back afterwards.
class Translations : public ::testing::Test {
  protected:
    ~Translations() override {
        for (QTranslator* translator : QCoreApplication::instance()->findChildren<QTranslator*>())
            delete translator;
        QLocale::setDefault(before_);
    }

    static QString firmwareCaption(const QString& language) {
        QLocale::setDefault(QLocale(language));
        installTranslations();
        const MainWindow window;
        return window.findChild<QPushButton*>("firmwareBtn")->accessibleName();
    }

  private:
    QLocale before_;
};

struct Caption {
    const char* language;
    const char* text;
};

class Languages : public Translations, public ::testing::WithParamInterface<Caption> {};

TEST_P(Languages, AreSpoken) {
    EXPECT_EQ(firmwareCaption(GetParam().language), QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Translations, Languages,
                         ::testing::Values(Caption{"de_AT", "Firmware aktualisieren …"},
                                           Caption{"fr_FR", "Mettre à jour le micrologiciel…"},
                                           Caption{"es_MX", "Actualizar el firmware…"},
                                           Caption{"ja_JP", "ファームウェアを更新(F)…"},
                                           Caption{"ar_EG", "تحديث البرنامج الثابت…"}),
                         [](const auto& tested) { return std::string(tested.param.language); });

TEST_F(Translations, LeaveEnglishAndUnknownLanguagesAsTheyAre) {
    EXPECT_TRUE(firmwareCaption("en_GB").startsWith("Update Firmware…"));
    EXPECT_TRUE(firmwareCaption("fi_FI").startsWith("Update Firmware…"));
}

}  // namespace
}  // namespace kestrav
