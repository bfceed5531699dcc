#include "app/qt/fitOnScreen.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace kestrav {
namespace {

// The desktop draws the frame and tells how thick it is only when it has done so.
constexpr int kBorder = 8;

}  // namespace

void fitOnScreen(QWidget& dialog) {
    const int title = 2 * dialog.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &dialog);
    const QSize room = dialog.screen()->availableSize() - QSize(2 * kBorder, title + kBorder);
    dialog.resize(dialog.size().boundedTo(room).expandedTo(dialog.minimumSizeHint()));
}

}  // namespace kestrav
