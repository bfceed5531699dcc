#include "app/qt/StatusLineAnswers.h"

#include <QCoreApplication>
#include <string>

#include "app/qt/StatusLine.h"
#include "base/utf8.h"

namespace kestrav {

StatusLineAnswers::StatusLineAnswers(StatusLine& line) : line_(&line) {}

void StatusLineAnswers::answered(std::string_view bytes) {
    if (isValidUTF8(bytes)) show(bytes);
}

void StatusLineAnswers::unanswered(const Unanswered& unanswered) {
    if (!unanswered.sentence.empty()) show(unanswered.sentence);
}

void StatusLineAnswers::show(std::string_view sentence) const {
    // The pointer is read on the main thread only, because the line is made and destroyed there.
    QMetaObject::invokeMethod(QCoreApplication::instance(), [line = line_, text = std::string(sentence)] {
        if (line) line->showSentence(text);
    });
}

}  // namespace kestrav
