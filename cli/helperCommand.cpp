#include "cli/helperCommand.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <ostream>
#include <utility>

#include "base/SystemLog.h"
#include "command/Authorization.h"
#include "command/HelperChannel.h"
#include "command/HelperInstallation.h"
#include "command/Job.h"
#include "command/MainQueue.h"

namespace kestrav {
namespace {

/// The main thread of a program without an event loop: it works off what it is sent until it is told to stop.
class WaitingMainQueue final : public MainQueue {
  public:
    void async(std::function<void()> task) override {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        arrived_.notify_one();
    }

    void runOne() {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [this] { return !tasks_.empty(); });
        const auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> tasks_;
};

/// Passes everything on and tells of failed requests. A job reports them to its log alone, and somebody who waits for
/// the job has to hear of them.
class FailureNoticingLog final : public SystemLog {
  public:
    FailureNoticingLog(SystemLog& log, std::function<void()> failed) : log_(log), failed_(std::move(failed)) {}

    void write(std::string_view entry) override {
        log_.write(entry);
        if (entry.starts_with("remote proxy error: ")) failed_();
    }

  private:
    SystemLog& log_;
    std::function<void()> failed_;
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
    if (const auto problem = parts.uninstall()) {
        console.err << escapedForTerminal(*problem) << std::endl;
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
    FailureNoticingLog log(parts.log, [&] { queue.async([&] { ended = ExitCode::failure; }); });
    Job job(parts.channel, queue, log);
    job.runWithCmd(invocation.command, invocation.arguments,
                   [&ended](const std::string&) { ended = ExitCode::success; });
    while (!ended)
        queue.runOne();
    if (*ended == ExitCode::success) {
        console.out << "The helper has finished; its log says what came of it." << std::endl;
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
