#pragma once

#include <QColor>
#include <QPalette>

namespace kestrav {

/// How far two opaque colours stand apart, from 1 for the same to 21 for black and white, as the Web Content
/// Accessibility Guidelines count it.
double contrastBetween(const QColor& one, const QColor& other);

/// `colour`, drawn as strongly as it takes to be told from `background`, at a contrast of 3 at least: mixed with
/// `strongest`, the colour of text on it. A `colour` that lets something through is laid on the background first. The
/// answer is opaque.
QColor discernible(const QColor& colour, const QColor& background, const QColor& strongest);

/// Whether the theme is one of the highest contrast: black on white or white on black, and next to nothing between. The
/// toolkit derives its borders from the window's colour, so there they can't be seen.
bool isOfHighContrast(const QPalette& palette);

}  // namespace kestrav
