#include "app/qt/setPlainTexts.h"

#include <QLabel>
#include <QMessageBox>

namespace kestrav {

void setPlainTexts(QMessageBox& box, const QString& text, const QString& more) {
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setInformativeText(more);
    // The box applies the format to its first label only.
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
}

}  // namespace kestrav
