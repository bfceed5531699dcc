#include "cli/carryOutHelper.h"

#include <atomic>
#include <exception>
#include <functional>
#include <optional>
#include <ostream>
#include <utility>

#include "base/SystemLog.h"
#include "base/shownText.h"
#include "cli/WaitingMainQueue.h"
#include "command/AnswerSink.h"
#include "command/Authorization.h"
#include "command/HelperChannel.h"
#include "command/HelperInstallation.h"
#include "command/Job.h"

namespace kestrav {
namespace {

/// Tells the main thread of a request that failed: whoever waits for the completion would wait for ever.
class FailedRequest final : public AnswerSink {
  public:
    /// `mainQueue` is not owned and outlives this object; `then` runs there.
    FailedRequest(MainQueue& mainQueue, std::function<void()> then) : mainQueue_(mainQueue), then_(std::move(then)) {}

    void answered(std::string_view /*bytes*/) override {}
    void unanswered(const Unanswered& /*unanswered*/) override { mainQueue_.async(then_); }

  private:
    MainQueue& mainQueue_;
    std::function<void()> then_;
};

/// Passes entries on, to another log from then on. Written to on any thread.
class SwitchingLog final : public SystemLog {
  public:
    /// Not owned; both logs outlive this object.
    explicit SwitchingLog(SystemLog& log) : log_(&log) {}
    void switchTo(SystemLog& log) { log_ = &log; }

    void write(std::string_view entry) override { log_.load()->write(entry); }

  private:
    std::atomic<SystemLog*> log_;
};

ExitCode install(const HelperParts& parts, const Console& console) {
    std::optional<AuthorizationRef> authRef;
    try {
        HelperInstallation(parts.authorization, parts.log).blessHelper(authRef);
    } catch (const std::exception& error) {
        console.err << escapedForTerminal(error.what()) << std::endl;
        return ExitCode::failure;
    }
    console.out << "The helper is installed." << std::endl;
    return ExitCode::success;
}

ExitCode uninstall(const HelperParts& parts, const Console& console) {
    if (const auto done = parts.uninstall(); !done) {
        console.err << escapedForTerminal(done.problem().sentence) << std::endl;
        return ExitCode::failure;
    }
    console.out << "The helper is uninstalled." << std::endl;
    return ExitCode::success;
}

ExitCode status(const HelperParts& parts, const Console& console) {
    switch (parts.state()) {
        case HelperState::running:
            console.out << "The helper is installed and running." << std::endl;
            return ExitCode::success;
        case HelperState::installed:
            console.out << "The helper is installed and starts when it is needed." << std::endl;
            return ExitCode::success;
        case HelperState::notInstalled:
            console.out << "The helper is not installed." << std::endl;
            return ExitCode::failure;
        case HelperState::unknown:
            console.err << "The system bus does not answer, so nobody knows." << std::endl;
            return ExitCode::failure;
    }
    return ExitCode::failure;
}

ExitCode run(const HelperInvocation& invocation, const HelperParts& parts, const Console& console) {
    WaitingMainQueue queue;
    std::optional<ExitCode> ended;
    FailedRequest failedRequest(queue, [&ended] { ended = ExitCode::failure; });
    SwitchingLog log(parts.log);
    Job job(parts.channel, queue, log, &failedRequest);
    job.runWithCmd(invocation.command, invocation.arguments,
                   [&ended](const std::string&) { ended = ExitCode::success; });
    while (!ended)
        queue.runOne();
    if (*ended == ExitCode::success) {
        console.out << "The helper has finished; its log says what came of it." << std::endl;
        // The job ends its connection and says so, which reads like trouble below a run that went well.
        log.switchTo(parts.quietLog);
    }
    return *ended;
}

}  // namespace

ExitCode carryOutHelper(const HelperInvocation& invocation, const HelperParts& parts, const Console& console) {
    switch (invocation.operation) {
        case HelperInvocation::Operation::install:
            return install(parts, console);
        case HelperInvocation::Operation::uninstall:
            return uninstall(parts, console);
        case HelperInvocation::Operation::status:
            return status(parts, console);
        case HelperInvocation::Operation::run:
            return run(invocation, parts, console);
    }
    return ExitCode::wrongCall;
}

}  // namespace kestrav
