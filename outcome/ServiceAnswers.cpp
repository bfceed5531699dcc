#include "outcome/ServiceAnswers.h"

#include "base/utf8.h"

namespace kestrav {

bool ServiceAnswers::Given::isText() const {
    return isValidUTF8(bytes);
}

void ServiceAnswers::asked(std::string_view command, std::span<const std::string> arguments) {
    question_ = AnswerTo::of(command, arguments);
}

void ServiceAnswers::answered(std::string_view bytes) {
    exchanges_.push_back({question_, Given{parseAnswer(bytes, question_), std::string(bytes)}});
}

void ServiceAnswers::unanswered(const Unanswered& unanswered) {
    exchanges_.push_back({question_, unanswered});
}

}  // namespace kestrav
