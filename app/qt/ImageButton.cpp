#include "app/qt/ImageButton.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

namespace kestrav {
namespace {

/// The file that is dragged; empty unless it is exactly one, on this computer, and stays where it is. A folder is no
/// image.
QString draggedFile(const QDropEvent& event) {
    const QList<QUrl> urls = event.mimeData()->urls();
    if (!event.possibleActions().testFlag(Qt::CopyAction) || urls.size() != 1 || !urls.first().isLocalFile()) return {};
    const QString path = urls.first().toLocalFile();
    const QFileInfo info(path);
    return info.isAbsolute() && info.exists() && !info.isDir() ? path : QString();
}

}  // namespace

ImageButton::ImageButton(const QString& text, QWidget* parent) : CaptionedButton(text, parent) {
    setAcceptDrops(true);
}

void ImageButton::dragEnterEvent(QDragEnterEvent* event) {
    // Whatever the other program had in mind: after a move it would remove the file.
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(!draggedFile(*event).isEmpty());
}

void ImageButton::dropEvent(QDropEvent* event) {
    const QString path = draggedFile(*event);
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(!path.isEmpty());
    // The other program waits for the end of this event, so nothing may be asked of a person in it.
    if (!path.isEmpty()) QTimer::singleShot(0, this, [this, path] { dropped_(path); });
}

}  // namespace kestrav
