#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/UniqueFd.h"
#include "services/asker/Asker.h"
#include "services/jobs/ToJob.h"

namespace kestrav {

class Request;

/// The asker of a request, in the process of the request and as its service sees it: one who wants nothing any more
/// once the service has given the request up, whose questions take turns with those of the same subject's other
/// requests, and for whom a question may go on after the service has answered.
class AskerOfJob final : public Asker {
  public:
    /// Nothing is owned. `channel` leads to the service.
    AskerOfJob(Request& request, int channel);

    /// In one harmless line, for the service's log.
    void isAskedFor(std::string commandLine) { asked_ = std::move(commandLine); }
    /// What is asked is a write, which a sleep or a shutdown would cut in two.
    void keepAwakeOnceBegun() { writes_ = true; }

    uid_t uid() const override { return asker_.uid(); }
    Outcome<ConsentSubject> subject() override { return asker_.subject(); }
    Outcome<void> couldDoItself(const ConsentSubject& subject) override { return asker_.couldDoItself(subject); }
    bool mayBePrompted() const override { return asker_.mayBePrompted(); }
    Outcome<void> awaitTurn(const ConsentSubject& subject) override;
    void tellDecision(const Outcome<void>& decision) override;
    void whenAnswered(const std::function<void()>& handler) override { whenAnswered_ = handler; }
    bool stillWants() override;
    bool mayBegin() override;

  private:
    struct Message {
        ToJob word;
        std::string text;
    };
    std::optional<Message> hear(int flags);
    void becomeLate();

    Request& request_;
    Asker& asker_;
    int channel_;
    std::string asked_;
    std::function<void()> whenAnswered_ = [] {};
    std::optional<ConsentSubject> subject_;  ///< on whose behalf a person is asked
    bool isGivenUp_ = false;
    bool isLate_ = false;
    bool writes_ = false;
    UniqueFd awake_;
};

}  // namespace kestrav
