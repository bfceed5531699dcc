#include "app/UpdateRecord.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "outcome/writeRequestIn.h"

namespace kestrav {
namespace {

/// How long the image is now: the engine has just read it.
std::int64_t lengthOf(const std::string& image) {
    std::error_code error;
    const auto bytes = std::filesystem::file_size(image, error);
    return error ? 0 : static_cast<std::int64_t>(bytes);
}

}  // namespace

UpdateRecord::UpdateRecord(Asks asks, WriteWatch::Show show, BoardReader board)
    : asks_(std::move(asks)),
      watch_(answers_, std::move(show), std::move(board)) {}

void UpdateRecord::begin() {
    answers_.forget();
    request_ = {};
}

void UpdateRecord::asked(std::string_view command, std::span<const std::string> arguments) {
    const AnswerTo::Kind kind = AnswerTo::of(command, arguments).kind;
    asks_(kind);
    if (kind == AnswerTo::Kind::write) {
        request_ = writeRequestIn(arguments);
        request_.bytes = lengthOf(request_.image);
        watch_.expect(request_.bytes);
    }
    watch_.asked(command, arguments);
}

UpdateFacts UpdateRecord::facts() const {
    UpdateFacts facts;
    facts.request = request_;
    const ServiceAnswers::Exchange* last = answers_.last();
    if (last != nullptr && last->question.kind == AnswerTo::Kind::write) facts.write = *last;
    return facts;
}

}  // namespace kestrav
