#include "services/commandd/RequestScan.h"

namespace kestrav {

RequestScan::State RequestScan::take(std::string_view bytes) {
    for (const char byte : bytes) {
        if (state_ == State::complete) state_ = State::moreBehindIt;
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
