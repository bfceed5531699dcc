#include "app/qt/FittingColumn.h"

#include <QEvent>
#include <QLayout>

namespace kestrav {

bool FittingColumn::event(QEvent* event) {
    const bool done = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Resize) fit();
    return done;
}

void FittingColumn::fit() {
    if (layout() == nullptr || !layout()->hasHeightForWidth()) return;
    const int needed = layout()->minimumHeightForWidth(width());
    if (needed != minimumHeight()) setMinimumHeight(needed);
}

}  // namespace kestrav
