#pragma once

#include <string>
#include <string_view>

namespace kestrav {

/// The system's log: where the command exchange, the helper connection and the services report.
/// One call writes one entry. Entries are data: nothing in them is interpreted, percent signs included.
class SystemLog {
  public:
    virtual ~SystemLog() = default;
    /// Writes one entry.
    virtual void write(std::string_view entry) = 0;
};

/// The real one: syslog(3), facility user, priority notice, and a copy on standard error as one line
/// "IDENT: ENTRY", unless standard error is the system's log already: systemd says so with JOURNAL_STREAM, and every
/// line would be in it twice. Characters that mislead are shown escaped in the copy (\x1b), so that text from outside
/// can't steer a terminal. Bytes from the first NUL on are not sent to syslog(3), which takes NUL-terminated text. Make
/// one for the life of a process: openlog(3) is process-wide.
class SyslogSystemLog final : public SystemLog {
  public:
    /// What becomes of a copy while whoever reads standard error, a pipe for example, doesn't take more: a program that
    /// a person started waits and loses nothing; one that serves others goes on without the rest of the copy.
    enum class SlowReader { isWaitedFor, missesLines };

    /// `ident` is the program's name; it is kept by this object for openlog(3).
    explicit SyslogSystemLog(std::string ident, SlowReader slowReader = SlowReader::isWaitedFor);
    ~SyslogSystemLog() override;
    SyslogSystemLog(const SyslogSystemLog&) = delete;
    SyslogSystemLog& operator=(const SyslogSystemLog&) = delete;

    /// Writes one entry, and its copy.
    void write(std::string_view entry) override;

  private:
    void copyToStandardError(std::string_view line) const;

    std::string ident_;
    SlowReader slowReader_;
    bool copies_;
};

}  // namespace kestrav
