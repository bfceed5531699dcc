#include "cli/ServiceAnswers.h"

#include <algorithm>

#include "base/utf8.h"

namespace kestrav {
namespace {

bool wasHeard(const ServiceAnswers::Exchange& exchange) {
    if (const auto* given = std::get_if<ServiceAnswers::Given>(&exchange.end)) return given->isLogged;
    return !std::get<Unanswered>(exchange.end).sentence.empty();
}

}  // namespace

bool ServiceAnswers::saidLastThatItFailed() const {
    const auto heard = std::find_if(exchanges_.rbegin(), exchanges_.rend(), wasHeard);
    if (heard == exchanges_.rend()) return false;
    const auto* given = std::get_if<Given>(&heard->end);
    return given != nullptr && given->answer.meaning == Answer::Meaning::failed;
}

void ServiceAnswers::asked(std::string_view command, std::span<const std::string> arguments) {
    question_ = AnswerTo::of(command, arguments);
}

void ServiceAnswers::answered(std::string_view bytes) {
    exchanges_.push_back({question_, Given{parseAnswer(bytes, question_), isValidUTF8(bytes)}});
}

void ServiceAnswers::unanswered(const Unanswered& unanswered) {
    exchanges_.push_back({question_, unanswered});
}

}  // namespace kestrav
