#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/SystemLog.h"
#include "base/UniqueFd.h"

namespace kestrav {
namespace {

TEST(SyslogSystemLog, CopiesTheEntryToStandardErrorAsData) {
    testing::internal::CaptureStderr();
    SyslogSystemLog("kestrav-test").write("50 %s %n done");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "kestrav-test: 50 %s %n done\n");
}

TEST(SyslogSystemLog, MovesNobodysTerminal) {
    testing::internal::CaptureStderr();
    SyslogSystemLog("kestrav-test").write("cleared\x1b[2J");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "kestrav-test: cleared\\x1b[2J\n");
}

/// What is on standard error after a line, with JOURNAL_STREAM naming it, its inode increased by `offset`.
std::string copyWithJournalStream(ino_t offset) {
    testing::internal::CaptureStderr();
    struct stat status {};
    ::fstat(STDERR_FILENO, &status);
    const std::string stream = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino + offset);
    ::setenv("JOURNAL_STREAM", stream.c_str(), 1);
    SyslogSystemLog("kestrav-test").write("done");
    ::unsetenv("JOURNAL_STREAM");
    return testing::internal::GetCapturedStderr();
}

TEST(SyslogSystemLog, CopiesNothingToTheJournalWhichHasItAlready) {
    EXPECT_EQ(copyWithJournalStream(0), "");
}

TEST(SyslogSystemLog, CopiesToStandardErrorThatIsTheJournalNoLonger) {
    EXPECT_EQ(copyWithJournalStream(1), "kestrav-test: done\n");
}

/// Standard error is a full pipe until the object goes.
class FullStandardError {
  public:
    FullStandardError() : kept_(::dup(STDERR_FILENO)) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        reader_.reset(ends[0]);
        const UniqueFd writer(ends[1]);
        const auto size = static_cast<std::size_t>(::fcntl(ends[1], F_SETPIPE_SZ, 4096));
        const std::string filling(size, 'x');
        if (::write(ends[1], filling.data(), size) != static_cast<ssize_t>(size)) throw std::runtime_error("not full");
        ::dup2(ends[1], STDERR_FILENO);
    }
    ~FullStandardError() { ::dup2(kept_.get(), STDERR_FILENO); }
    FullStandardError(const FullStandardError&) = delete;
    FullStandardError& operator=(const FullStandardError&) = delete;

    /// Everything that is in the pipe, and what comes until `end` is seen.
    std::string readUntil(std::string_view end) const {
        std::string text;
        std::array<char, 4096> bytes{};
        while (text.find(end) == std::string::npos) {
            const ssize_t got = ::read(reader_.get(), bytes.data(), bytes.size());
            if (got <= 0) return text;
            text.append(bytes.data(), static_cast<std::size_t>(got));
        }
        return text;
    }

  private:
    UniqueFd kept_;
    UniqueFd reader_;
};

TEST(SyslogSystemLog, DropsTheCopyThatNobodyTakes) {
    const FullStandardError full;
    SyslogSystemLog log("kestrav-test", SyslogSystemLog::SlowReader::missesLines);
    log.write("lost");  // returns
    full.readUntil("x");
    log.write("seen");
    EXPECT_EQ(full.readUntil("seen\n"), "kestrav-test: seen\n");
}

TEST(SyslogSystemLog, WaitsForASlowReaderOtherwise) {
    const FullStandardError full;
    std::thread writer([] { SyslogSystemLog("kestrav-test").write(std::string(20000, 'y') + "end"); });
    const std::string text = full.readUntil("end\n");
    writer.join();
    EXPECT_EQ(text, std::string(4096, 'x') + "kestrav-test: " + std::string(20000, 'y') + "end\n");
}

}  // namespace
}  // namespace kestrav
