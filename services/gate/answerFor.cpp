#include "services/gate/answerFor.h"

#include <string_view>

#include "base/shownText.h"
#include "protocol/wire.h"

namespace kestrav {

std::string answerFor(const Problem& problem) {
    const std::string_view start = problem.kind == Problem::Kind::refused ? kRefusedPrefix : kFailedPrefix;
    return shownSentence(std::string(start) + problem.sentence, kLongestAnswer);
}

}  // namespace kestrav
