#include "services/commandd/RequestScan.h"

namespace kestrav {
namespace {

/// What JSON takes between and behind values; a line end is what many programs send last.
bool isBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

}  // namespace

RequestScan::State RequestScan::take(std::string_view bytes) {
    for (const char byte : bytes) {
        if (state_ == State::complete && !isBlank(byte)) state_ = State::moreBehindIt;
        if (state_ == State::complete) continue;
        if (state_ != State::incomplete) break;
        takeOne(byte);
    }
    return state_;
}

void RequestScan::takeOne(char byte) {
    if (!begun_ && byte != '{') {
        state_ = State::noObject;
        return;
    }
    begun_ = true;
    if (inText_) {
        takeWithinText(byte);
        return;
    }
    if (byte == '"') inText_ = true;
    if (byte == '{' || byte == '[') ++depth_;
    if (byte != '}' && byte != ']') return;
    if (--depth_ == 0) state_ = State::complete;
}

void RequestScan::takeWithinText(char byte) {
    if (escaped_) {
        escaped_ = false;
        return;
    }
    if (byte == '\\') escaped_ = true;
    if (byte == '"') inText_ = false;
}

}  // namespace kestrav
