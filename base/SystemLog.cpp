#include "base/SystemLog.h"

#include <algorithm>
#include <cstdlib>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

#include "base/utf8.h"
#include "base/writeWithPatience.h"

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

/// Whether systemd has connected standard error to its journal. The variable names the stream, so that a program whose
/// standard error is another one by now does not believe it.
bool standardErrorIsTheJournal() {
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    if (stream == nullptr || ::fstat(STDERR_FILENO, &status) != 0) return false;
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
}

}  // namespace

SyslogSystemLog::SyslogSystemLog(std::string ident, SlowReader slowReader)
    : ident_(std::move(ident)),
      slowReader_(slowReader),
      copies_(!standardErrorIsTheJournal()) {
    ::openlog(ident_.c_str(), LOG_PID, LOG_USER);
}

SyslogSystemLog::~SyslogSystemLog() {
    ::closelog();
}

void SyslogSystemLog::write(std::string_view entry) {
    const std::string text(entry);
    ::syslog(LOG_NOTICE, "%s", text.c_str());
    if (!copies_) return;
    // One write for a line of ordinary length, so that lines of two processes don't mix.
    const std::string line = ident_ + ": " + escapedForTerminal(entry) + "\n";
    copyToStandardError(line);
}

void SyslogSystemLog::copyToStandardError(std::string_view line) const {
    const bool waits = slowReader_ == SlowReader::isWaitedFor;
    writeWithPatience(STDERR_FILENO, line, waits ? kEndlessPatience : std::chrono::milliseconds(0));
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
