#include "base/SystemLog.h"

#include <cstdlib>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

#include "base/QuietSystemLog.h"
#include "base/shownText.h"
#include "base/writeWithPatience.h"

namespace kestrav {
namespace {

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
    QuietSystemLog().write(entry);
    if (!copies_) return;
    // One write for a line of ordinary length, so that lines of two processes don't mix.
    const std::string line = ident_ + ": " + escapedForTerminal(entry) + "\n";
    copyToStandardError(line);
}

void SyslogSystemLog::copyToStandardError(std::string_view line) const {
    const bool waits = slowReader_ == SlowReader::isWaitedFor;
    writeWithPatience(STDERR_FILENO, line, waits ? kEndlessPatience : std::chrono::milliseconds(0));
}

}  // namespace kestrav
