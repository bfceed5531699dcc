#pragma once

#include <functional>
#include <string>

#include "app/LastScene.h"
#include "app/UpdateObserver.h"
#include "base/UniqueFd.h"
#include "command/AnswerSink.h"

namespace kestrav {

/// A process beside this one that outlives it. Where this one stops in the middle, by a signal or by its own abort, the
/// other one tells the person; who ends it on purpose (by closing the window, or with SIGTERM, SIGINT or SIGHUP) is
/// told nothing. Told of the updates on the main thread, and of what is asked for on any.
///
/// At most one at a time. One with static storage also hears std::exit().
class LastWords final : public UpdateObserver, public AnswerSink {
  public:
    /// What the other process is called.
    static constexpr const char* kProcessName = "kestrav-witness";

    /// Nobody outlives this process yet.
    LastWords() = default;
    /// Starts the other process, once. `tell` runs in it and has nothing but its three standard descriptors, all on
    /// /dev/null; the process ends when it returns. It is a copy of this one without its other threads, whose locks may
    /// be held in it for ever: `tell` allocates nothing and calls no toolkit, but may execute a program. Without room
    /// for another process, nobody is told anything.
    void begin(const std::function<void(const LastScene&)>& tell);
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
