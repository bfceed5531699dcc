#include "app/qt/prefersStillness.h"

#include <QSettings>
#include <QStandardPaths>
#include <QStyle>
#include <QWidget>

namespace kestrav {

bool prefersStillness(const QWidget& widget) {
    if (widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0) return true;
    const QString file = QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("kdeglobals"));
    if (file.isEmpty()) return false;
    const QSettings settings(file, QSettings::IniFormat);
    bool isNumber = false;
    const double factor = settings.value(QStringLiteral("KDE/AnimationDurationFactor"), 1).toDouble(&isNumber);
    return isNumber && factor <= 0;
}

}  // namespace kestrav
