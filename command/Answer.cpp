#include "command/Answer.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "base/utf8.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// UTF-8, below the length of an answer, and without a control character (C0, DEL and C1): so are all texts of ours.
bool isText(std::string_view bytes) {
    if (bytes.size() >= kReplyRoom || !isValidUTF8(bytes)) return false;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        if (byte < 0x20 || byte == 0x7f) return false;
        if (byte == 0xc2 && static_cast<unsigned char>(bytes[at + 1]) < 0xa0) return false;
    }
    return true;
}

/// Takes an answer apart from its front. A step that does not find what it looks for takes nothing.
class Words {
  public:
    explicit Words(std::string_view rest) : rest_(rest) {}

    bool take(std::string_view words) {
        if (!rest_.starts_with(words)) return false;
        rest_.remove_prefix(words.size());
        return true;
    }

    /// Decimal digits as the service writes them: without a sign and without zeros in front.
    std::optional<std::uint64_t> takeNumber() {
        if (rest_.size() > 1 && rest_[0] == '0' && isDigit(rest_[1])) return std::nullopt;
        std::uint64_t value = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (error != std::errc()) return std::nullopt;
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return value;
    }

    /// The kernel's name of a block device.
    std::optional<std::string> takeName() {
        const auto end = std::ranges::find_if_not(rest_, [](char c) {
            return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
        });
        std::string name(rest_.begin(), end);
        if (name.empty()) return std::nullopt;
        rest_.remove_prefix(name.size());
        return name;
    }

    std::string_view rest() const { return rest_; }

  private:
    std::string_view rest_;
};

/// The speed with one decimal, then nothing or further sentences. An answer that ends otherwise was cut off.
bool endsWithSpeedAndRemarks(Words words) {
    if (!words.takeNumber() || !words.take(".") || !words.takeNumber() || !words.take(kSpeedEnd)) return false;
    return words.rest().empty() || (words.rest().starts_with(' ') && words.rest().ends_with('.'));
}

Answer answerToWrite(Words words) {
    if (!words.take(kWrotePrefix)) return {};
    const auto bytes = words.takeNumber();
    if (!bytes || !words.take(kBytesToPart)) return {};
    auto disk = words.takeName();
    if (!disk || !words.take(kAtBlockPart)) return {};
    const auto firstBlock = words.takeNumber();
    const bool verified = words.take(kVerifiedPart);
    if (!firstBlock || (!verified && !words.take(kNotVerifiedPart)) || !endsWithSpeedAndRemarks(words)) return {};
    return {verified ? Answer::Meaning::wroteAndVerified : Answer::Meaning::wroteAndNotVerified,
            *bytes,
            *firstBlock,
            std::move(*disk),
            {}};
}

Answer answerToUnmount(Words words) {
    const bool unmounted = words.take(kUnmountedPrefix);
    auto partition = words.takeName();
    if (!partition) return {};
    if (!unmounted) {
        if (words.rest() != kNotMountedEnd) return {};
        return {Answer::Meaning::wasNotMounted, 0, 0, std::move(*partition), {}};
    }
    // A place is a path, so there is more than the sentence's full stop.
    if (!words.take(kFromPart) || !words.rest().starts_with('/') || !words.rest().ends_with('.')) return {};
    return {Answer::Meaning::unmounted, 0, 0, std::move(*partition), {}};
}

/// A refusal or a failure; either may be the answer to anything.
std::optional<Answer> problemIn(Words words) {
    const bool refused = words.take(kRefusedPrefix);
    if (!refused && !words.take(kFailedPrefix)) return std::nullopt;
    return Answer{refused ? Answer::Meaning::refused : Answer::Meaning::failed, 0, 0, {}, std::string(words.rest())};
}

}  // namespace

Answer parseAnswer(std::string_view bytes, const AnswerTo& question) {
    const bool text = isText(bytes);
    if (text) {
        if (auto problem = problemIn(Words(bytes))) return std::move(*problem);
    }
    switch (question.kind) {
        case AnswerTo::Kind::read:
            if (bytes.empty() || bytes.size() != question.bytes) return {};
            return {Answer::Meaning::blocks, 0, 0, {}, {}};
        case AnswerTo::Kind::write:
            return text ? answerToWrite(Words(bytes)) : Answer{};
        case AnswerTo::Kind::unmount:
            return text ? answerToUnmount(Words(bytes)) : Answer{};
        case AnswerTo::Kind::other:
            return {};
    }
    return {};
}

}  // namespace kestrav
