#include "base/SystemLog.h"

#include <cstdio>
#include <syslog.h>
#include <utility>

namespace kestrav {

SyslogSystemLog::SyslogSystemLog(std::string ident) : ident_(std::move(ident)) {
    ::openlog(ident_.c_str(), LOG_PID, LOG_USER);
}

SyslogSystemLog::~SyslogSystemLog() {
    ::closelog();
}

void SyslogSystemLog::write(std::string_view entry) {
    const std::string text(entry);
    ::syslog(LOG_NOTICE, "%s", text.c_str());
    // One write for the whole line, so that lines of two processes don't mix.
    const std::string line = ident_ + ": " + escapedForTerminal(entry) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string escapedForTerminal(std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string shown;
    shown.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            shown += c;
            continue;
        }
        shown += "\\x";
        shown += digits[byte >> 4];
        shown += digits[byte & 0x0f];
    }
    return shown;
}

}  // namespace kestrav
