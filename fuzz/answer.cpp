// Answers as they come over the wire, where another program may listen on the port. What counts as an outcome has that
// outcome's form, and holds nothing that misleads in a line.
//
// The input's first byte says what was asked, the rest is the answer.

#include "command/Answer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/stopProcess.h"
#include "base/utf8.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

using Meaning = Answer::Meaning;

bool isLine(std::string_view bytes) {
    return bytes.size() < kReplyRoom && isValidUTF8(bytes) &&
           std::ranges::none_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

void checkForm(const Answer& answer, const AnswerTo& question, std::string_view bytes) {
    switch (answer.meaning) {
        case Meaning::wroteAndVerified:
        case Meaning::wroteAndNotVerified: {
            const bool isVerified = answer.meaning == Meaning::wroteAndVerified;
            const std::string form = std::string(kWrotePrefix) + std::to_string(answer.bytes) +
                                     std::string(kBytesToPart) + answer.disk + std::string(kAtBlockPart) +
                                     std::to_string(answer.firstBlock) +
                                     std::string(isVerified ? kVerifiedPart : kNotVerifiedPart);
            return require(question.kind == AnswerTo::Kind::write && isLine(bytes) && bytes.starts_with(form));
        }
        case Meaning::unmounted:
            return require(question.kind == AnswerTo::Kind::unmount && isLine(bytes) &&
                           bytes.starts_with(std::string(kUnmountedPrefix) + answer.disk));
        case Meaning::wasNotMounted:
            return require(question.kind == AnswerTo::Kind::unmount &&
                           bytes == answer.disk + std::string(kNotMountedEnd));
        case Meaning::refused:
            return require(isLine(bytes) && bytes == std::string(kRefusedPrefix) + answer.problem);
        case Meaning::failed:
            return require(isLine(bytes) && bytes == std::string(kFailedPrefix) + answer.problem);
        case Meaning::blocks:
            return require(question.kind == AnswerTo::Kind::read);
        case Meaning::notOurs:
            return;
    }
}

void check(std::uint8_t which, std::string_view bytes) {
    constexpr std::array kKinds{AnswerTo::Kind::unmount, AnswerTo::Kind::write, AnswerTo::Kind::read,
                                AnswerTo::Kind::other};
    AnswerTo question{kKinds.at(which % kKinds.size())};
    if (question.kind == AnswerTo::Kind::read) question.bytes = which >= 128 ? bytes.size() : 512;
    checkForm(parseAnswer(bytes, question), question, bytes);
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kestrav::check(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
