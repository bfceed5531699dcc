#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

#include "services/asker/Asker.h"

namespace kestrav {

/// Somebody on the bus, who is as a test says.
class FakeAsker final : public Asker {
  public:
    explicit FakeAsker(uid_t uid = ::geteuid()) : uid_(uid) {}

    std::string name = ":1.1";
    bool prompts = true;
    bool wants = true;
    bool begins = true;
    std::function<void()> looks;          ///< called whenever it is asked whether it still wants the answer
    std::optional<Problem> notItsTurn;    ///< none: it is
    std::optional<bool> decision;         ///< what it was told came of asking
    std::function<void()> answered;       ///< to be called where the asker is answered before a decision
    std::optional<Problem> cannotItself;  ///< none: it could
    int lookedUp = 0;                     ///< how often whom to ask about was asked

    uid_t uid() const override { return uid_; }
    Outcome<ConsentSubject> subject() override {
        ++lookedUp;
        if (name.empty()) return refused("nobody knows who asks.");
        return ConsentSubject(AskingBusName{name});
    }
    Outcome<void> couldDoItself(const ConsentSubject&) override {
        return cannotItself ? Outcome<void>(*cannotItself) : Outcome<void>();
    }
    bool mayBePrompted() const override { return prompts; }
    Outcome<void> awaitTurn(const ConsentSubject&) override {
        return notItsTurn ? Outcome<void>(*notItsTurn) : Outcome<void>();
    }
    void whenAnswered(const std::function<void()>& handler) override { answered = handler; }
    void tellDecision(const Outcome<void>& told) override { decision = static_cast<bool>(told); }
    bool stillWants() override {
        if (looks) looks();
        return wants;
    }
    bool mayBegin() override { return begins; }

  private:
    uid_t uid_;
};

/// A user of every Debian whom these tests don't run as.
inline constexpr uid_t kOtherUser = 1;

}  // namespace kestrav
