#pragma once

#include <functional>
#include <string>

#include "app/UpdateObserver.h"
#include "base/UniqueFd.h"
#include "command/AnswerSink.h"

namespace kestrav {

/// What the program was doing when it stopped.
struct LastScene {
    bool isUpdating = false;
    bool mayBeWritten = false;  ///< since the newest update began, a write has been asked for
    std::string path;           ///< the image of the newest update; empty before the first
};

/// A process beside this one that outlives it. Where this one stops in the middle, by a signal or by its own abort, the
/// other one tells the person; who ends it on purpose (by closing the window, or with SIGTERM, SIGINT or SIGHUP) is
/// told nothing. Told of the updates on the main thread, and of what is asked for on any.
///
/// At most one at a time, made before any thread is started. One with static storage also hears std::exit().
class LastWords final : public UpdateObserver, public AnswerSink {
  public:
    /// `tell` runs in the other process, which has nothing but its three standard descriptors, all on /dev/null, and
    /// ends when it returns. Without room for another process, nobody is told anything.
    explicit LastWords(const std::function<void(const LastScene&)>& tell);
    /// The program ends as it should.
    ~LastWords() override;
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;

    /// For those who end the process without unwinding.
    void endsOnPurpose();

    void updateBegins(const Button& sender, const std::string& path) override;
    void updateEnded(const Button& sender, const std::string& path) override;
    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view /*bytes*/) override {}
    void unanswered(const Unanswered& /*unanswered*/) override {}

  private:
    void send(char what, std::string_view more = {}) const;

    UniqueFd other_;
};

}  // namespace kestrav
