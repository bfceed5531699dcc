#include "app/qt/installTranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTranslator>
#include <memory>

namespace kestrav {
namespace {

bool install(const QString& name, const QString& folder) {
    auto translator = std::make_unique<QTranslator>(QCoreApplication::instance());
    if (!translator->load(name, folder)) return false;
    return QCoreApplication::installTranslator(translator.release());
}

/// Loads the texts of one language; the toolkit's are a package of their own that may be missing.
bool speak(QString language) {
    language.replace('-', '_');
    if (!install(QStringLiteral("kestrav_") + language, QStringLiteral(":/translations"))) return false;
    install(QStringLiteral("qtbase_") + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    return true;
}

}  // namespace

void installTranslations() {
    for (const QString& language : QLocale().uiLanguages()) {
        // The texts are in English as they stand: whoever prefers it to another language has them already.
        if (QLocale(language).language() == QLocale::English || speak(language)) return;
    }
}

}  // namespace kestrav
