#include "base/QuietSystemLog.h"

#include <string>
#include <syslog.h>

namespace kestrav {

void QuietSystemLog::write(std::string_view entry) {
    ::syslog(LOG_NOTICE, "%s", std::string(entry).c_str());
}

}  // namespace kestrav
