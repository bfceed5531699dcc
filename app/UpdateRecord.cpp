#include "app/UpdateRecord.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kestrav {
namespace {

std::string_view valueOf(std::string_view key, std::span<const std::string> arguments) {
    const auto found = std::ranges::find_if(arguments, [key](std::string_view word) { return word.starts_with(key); });
    return found == arguments.end() ? std::string_view() : std::string_view(*found).substr(key.size());
}

/// The write that the arguments ask for. The image's length is taken now: the engine has just read it.
Request requestIn(std::span<const std::string> arguments) {
    Request request{std::string(valueOf("of=/dev/r", arguments)), 0, 0};
    const std::string_view block = valueOf("seek=", arguments);
    std::from_chars(block.data(), block.data() + block.size(), request.firstBlock);
    std::error_code error;
    const auto bytes = std::filesystem::file_size(valueOf("if=", arguments), error);
    if (!error) request.bytes = static_cast<std::int64_t>(bytes);
    return request;
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
        request_ = requestIn(arguments);
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
