#include "command/Job.h"

#include <utility>

#include "base/SystemLog.h"
#include "base/stopProcess.h"
#include "command/AnswerSink.h"
#include "command/HelperChannel.h"
#include "command/HelperInstallation.h"
#include "command/MainQueue.h"

namespace kestrav {

Job::Job(HelperChannel& channel, MainQueue& mainQueue, SystemLog& log, AnswerSink* answers)
    : channel_(channel),
      mainQueue_(mainQueue),
      log_(log),
      answers_(answers) {}

Job::~Job() {
    // frozen: F34
    jobConnection()->invalidate();
}

void Job::runWithCmd(std::string_view cmd, std::span<const std::string> arguments,
                     CompletionHandler completionHandler) {
    // frozen: F36
    const auto proxy = jobConnection()->remoteProxy([&log = log_, answers = answers_](std::string_view description) {
        log.write("remote proxy error: " + std::string(description));
        if (answers != nullptr) answers->unanswered({Unanswered::Why::requestFailed, std::string(description)});
    });
    // frozen: F37
    require(proxy != nullptr);
    if (answers_ != nullptr) answers_->asked(cmd, arguments);
    // Whoever builds on the completion learns only that the command is over; what was answered goes to the sink.
    // frozen: F33
    proxy->runWithCmd(
        cmd, arguments,
        [&queue = mainQueue_, answers = answers_, handler = std::move(completionHandler)](const std::string& text) {
            if (answers != nullptr) answers->answered(text);
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
    // frozen: F35
    return channel_.open(kHelperLabel, HelperChannelOptions::privileged,
                         {[&log = log_] { log.write("Connection Terminated"); },
                          [&log = log_] { log.write("Connection Invalidated"); }});
}

}  // namespace kestrav
