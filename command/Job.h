#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kestrav {

class AnswerSink;
class HelperChannel;
class HelperConnection;
class MainQueue;
class SystemLog;

/// The client of the privileged helper: runs commands as root over one connection, which is opened on first use and
/// kept from then on, broken or not. Used on the main thread.
///
/// Trouble goes to the log: "Connection Terminated" when the helper went away, "Connection Invalidated" when the
/// connection can't be used any more, "remote proxy error: " and a sentence when a request failed. Nothing is retried.
/// What becomes of a request is told to the answer sink, too.
class Job {
  public:
    /// Called on the main thread when the command has finished. The text is always empty: callers learn that the
    /// command finished, not what it printed.
    using CompletionHandler = std::function<void(std::string)>;

    /// None is owned; all outlive this object and its connection. Without `answers` nobody listens.
    Job(HelperChannel& channel, MainQueue& mainQueue, SystemLog& log, AnswerSink* answers = nullptr);
    /// Invalidates the connection, which an unused object opens for that.
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    /// Sends the command and returns at once. `completionHandler` is never called when the request fails.
    /// Stops the process when the helper doesn't offer the operation.
    void runWithCmd(std::string_view cmd, std::span<const std::string> arguments, CompletionHandler completionHandler);

    /// The connection; opened here when there is none.
    const std::shared_ptr<HelperConnection>& jobConnection();
    void setJobConnection(std::shared_ptr<HelperConnection> value) { jobConnection_ = std::move(value); }

  private:
    std::shared_ptr<HelperConnection> open();

    HelperChannel& channel_;
    MainQueue& mainQueue_;
    SystemLog& log_;
    AnswerSink* answers_;
    std::shared_ptr<HelperConnection> jobConnection_;
};

}  // namespace kestrav
