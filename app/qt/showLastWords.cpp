#include "app/qt/showLastWords.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMessageBox>
#include <QStringList>

#include "app/LastWords.h"
#include "app/qt/imageProblem.h"
#include "app/qt/setPlainTexts.h"

namespace kestrav {
namespace {

struct LastMessage {
    Q_DECLARE_TR_FUNCTIONS(LastMessage)
};

QString stateOfTheAccessory(const LastScene& scene) {
    if (!scene.mayBeWritten) return LastMessage::tr("Nothing was written to the accessory.");
    if (scene.isUpdating) {
        return LastMessage::tr(
            "The image may be on its way to the accessory: don't unplug it. Start Kestrav again and "
            "send the image again.");
    }
    return LastMessage::tr("It was not sending anything. What became of the last image stands in the log.");
}

}  // namespace

QString lastWordsOn(const LastScene& scene) {
    QStringList words{stateOfTheAccessory(scene)};
    // Most of what stops an update is wrong with the image.
    const QString problem = scene.isUpdating ? imageProblem(QString::fromStdString(scene.path)) : QString();
    if (!problem.isEmpty()) words.append(problem);
    words.append(LastMessage::tr("The log: %1").arg("journalctl -t kestrav -t kestrav-commandd"));
    return words.join(QStringLiteral("\n\n"));
}

void showLastWords(const LastScene& scene) {
    QMessageBox box(QMessageBox::Critical, LastMessage::tr("Kestrav"), {}, QMessageBox::Ok);
    setPlainTexts(box, LastMessage::tr("Kestrav has stopped."), lastWordsOn(scene));
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box.exec();
}

}  // namespace kestrav
