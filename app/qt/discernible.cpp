#include "app/qt/discernible.h"

#include <algorithm>
#include <cmath>

namespace kestrav {
namespace {

/// What the guidelines ask of whatever is no text and has to be seen.
constexpr double kLeastContrast = 3;
constexpr int kSteps = 20;

double linear(float part) {
    return part <= 0.04045F ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// So much of `over`, from 0 to 1, and the rest of `under`.
QColor mixed(const QColor& over, const QColor& under, float share) {
    const auto part = [share](float one, float other) {
        return std::clamp(one * share + other * (1 - share), 0.F, 1.F);
    };
    return QColor::fromRgbF(part(over.redF(), under.redF()), part(over.greenF(), under.greenF()),
                            part(over.blueF(), under.blueF()));
}

}  // namespace

double contrastBetween(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor discernible(const QColor& colour, const QColor& background, const QColor& strongest) {
    const QColor opaque = mixed(colour, background, colour.alphaF());
    for (int step = 0; step < kSteps; ++step) {
        // Counted as the screen shows it, in whole steps of 255.
        const QColor answer = mixed(strongest, opaque, static_cast<float>(step) / kSteps).rgb();
        if (contrastBetween(answer, background) >= kLeastContrast) return answer;
    }
    return strongest;
}

bool isOfHighContrast(const QPalette& palette) {
    // The toolkit's own light theme has 18.
    constexpr double kNextToBlackAndWhite = 19;
    // Of a disabled part, too: it is the theme that is asked after.
    return contrastBetween(palette.color(QPalette::Active, QPalette::WindowText),
                           palette.color(QPalette::Active, QPalette::Window)) > kNextToBlackAndWhite;
}

}  // namespace kestrav
