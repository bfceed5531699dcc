#include "base/SystemLog.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

#include "base/utf8.h"

namespace kestrav {
namespace {

bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) return first < 0x20 || first == 0x7f;
    // U+0080 to U+009F, of which some terminals take U+009B for the beginning of a command.
    return first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
}

void appendHexadecimal(std::string& shown, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    shown += {'\\', 'x', digits[value >> 4U], digits[value & 15U]};
}

bool hasRoom(int descriptor) {
    pollfd writing{descriptor, POLLOUT, 0};
    return ::poll(&writing, 1, 0) == 1 && (writing.revents & POLLOUT) != 0;
}

}  // namespace

SyslogSystemLog::SyslogSystemLog(std::string ident, SlowReader slowReader)
    : ident_(std::move(ident)),
      slowReader_(slowReader) {
    ::openlog(ident_.c_str(), LOG_PID, LOG_USER);
}

SyslogSystemLog::~SyslogSystemLog() {
    ::closelog();
}

void SyslogSystemLog::write(std::string_view entry) {
    const std::string text(entry);
    ::syslog(LOG_NOTICE, "%s", text.c_str());
    // One write for a line of ordinary length, so that lines of two processes don't mix.
    const std::string line = ident_ + ": " + escapedForTerminal(entry) + "\n";
    copyToStandardError(line);
}

void SyslogSystemLog::copyToStandardError(std::string_view line) const {
    while (!line.empty()) {
        // A pipe that has room at all has room for this much. O_NONBLOCK would say so as well, but it would hold for
        // everybody who shares the pipe or the terminal.
        if (slowReader_ == SlowReader::missesLines && !hasRoom(STDERR_FILENO)) return;
        const ssize_t written = ::write(STDERR_FILENO, line.data(), std::min<std::size_t>(line.size(), PIPE_BUF));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        line.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string escapedForTerminal(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = validUTF8SequenceLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length != 0 && !isControl(character)) {
            shown += character;
        } else {
            for (const char byte : character)
                appendHexadecimal(shown, byte);
        }
        text.remove_prefix(character.size());
    }
    return shown;
}

}  // namespace kestrav
