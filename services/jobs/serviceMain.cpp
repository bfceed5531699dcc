#include "services/jobs/serviceMain.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>

#include "base/SystemLog.h"
#include "base/openStandardDescriptors.h"

namespace kestrav {

int serviceMain(int count, char** words, const ServiceProgram& program,
                const std::function<int(RequestLog& log)>& serve) {
    if (!openStandardDescriptors()) return 1;
    const std::string_view word = count == 2 ? words[1] : "";
    if (word == "--help") {
        std::fputs(program.help, stdout);
        return 0;
    }
    if (word == "--version") {
        std::puts(program.version);
        return 0;
    }
    if (count != 1) {
        std::fputs(program.help, stderr);
        return 2;
    }
    // Before the first line: whoever reads standard error may have gone.
    std::signal(SIGPIPE, SIG_IGN);
    SyslogSystemLog lines(program.name, SyslogSystemLog::SlowReader::missesLines);
    try {
        RequestLog log(lines);
        return serve(log);
    } catch (const std::exception& error) {
        lines.write(error.what());
        return 1;
    }
}

}  // namespace kestrav
