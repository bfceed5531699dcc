#include "command/Job.h"

#include <utility>

#include "base/SystemLog.h"
#include "base/stopProcess.h"
#include "command/HelperChannel.h"
#include "command/HelperInstallation.h"
#include "command/MainQueue.h"

namespace kestrav {

Job::Job(HelperChannel& channel, MainQueue& mainQueue, SystemLog& log)
    : channel_(channel),
      mainQueue_(mainQueue),
      log_(log) {}

Job::~Job() {
    jobConnection()->invalidate();
}

void Job::runWithCmd(std::string_view cmd, std::span<const std::string> arguments,
                     CompletionHandler completionHandler) {
    const auto proxy = jobConnection()->remoteProxy(
        [&log = log_](std::string_view description) { log.write("remote proxy error: " + std::string(description)); });
    require(proxy != nullptr);
    // The helper's words are for its own log; what callers build on is only that the command is over.
    proxy->runWithCmd(cmd, arguments,
                      [&queue = mainQueue_, handler = std::move(completionHandler)](const std::string&) {
                          queue.async([handler] { handler({}); });
                      });
}

const std::shared_ptr<HelperConnection>& Job::jobConnection() {
    if (!jobConnection_) jobConnection_ = open();
    return jobConnection_;
}

std::shared_ptr<HelperConnection> Job::open() {
    // An interruption is a helper that went away and reads "Terminated"; a connection that is over for good reads
    // "Invalidated". Neither clears the field: a broken connection stays, and requests on it report that it is broken.
    return channel_.open(kHelperLabel, HelperChannelOptions::privileged,
                         {[&log = log_] { log.write("Connection Terminated"); },
                          [&log = log_] { log.write("Connection Invalidated"); }});
}

}  // namespace kestrav
