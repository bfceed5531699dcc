#include "cli/resultObject.h"

#include <cmath>

#include "base/utf8.h"

namespace kestrav {
namespace {

Tree textOrNull(const std::string& text) {
    return text.empty() ? Tree() : Tree(repairedUTF8(text));
}

/// To a millisecond: more digits would say nothing.
double seconds(std::chrono::duration<double> taken) {
    return std::round(taken.count() * 1000) / 1000;
}

}  // namespace

Tree resultObject(const UpdateResult& result) {
    const bool concernsAPlace = result.bytes > 0;
    Tree object = Tree::map();
    object.setMember("disk", textOrNull(result.disk));
    object.setMember("serial", textOrNull(result.serial));
    object.setMember("port", textOrNull(result.port));
    object.setMember("firstBlock", concernsAPlace ? Tree(result.firstBlock) : Tree());
    object.setMember("bytes", concernsAPlace ? Tree(result.bytes) : Tree());
    object.setMember("verified", Tree(result.verified));
    object.setMember("seconds", Tree(seconds(result.taken)));
    object.setMember("answer", textOrNull(result.answer));
    object.setMember("status", Tree(static_cast<int>(result.status)));
    object.setMember("problem", result.status == ExitCode::success ? Tree() : textOrNull(result.lastLine()));
    return object;
}

}  // namespace kestrav
