#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "app/UpdateFacts.h"
#include "command/AnswerSink.h"
#include "command/BoardReader.h"
#include "outcome/Request.h"
#include "outcome/ServiceAnswers.h"
#include "outcome/WriteWatch.h"

namespace kestrav {

/// What is answered to one update after another, and how their writes go on: the engine that runs them learns nothing
/// of it. Told on the thread that the update runs on; everything else is asked while none runs.
class UpdateRecord final : public AnswerSink {
  public:
    /// Hears what is asked for next, before anything is answered: on the thread that the update runs on.
    using Asks = std::function<void(AnswerTo::Kind)>;

    /// `show` hears how a write goes on, on a thread of its own. `board` is where the service says so.
    UpdateRecord(Asks asks, WriteWatch::Show show, BoardReader board = BoardReader());

    /// Forgets what was answered before.
    void begin();

    /// What is known of the update by what was answered; the rest is as on a good day.
    UpdateFacts facts() const;

    /// Waits for the end of a write that has brought no answer, as long as the service's board says that it goes on.
    WriteWatch::End follow() {
        return watch_.follow([] {});
    }
    /// Has follow() come back soon; may be called on any thread.
    void giveUp() { watch_.giveUp(); }

    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view bytes) override { watch_.answered(bytes); }
    void unanswered(const Unanswered& unanswered) override { watch_.unanswered(unanswered); }

  private:
    Asks asks_;
    ServiceAnswers answers_;
    WriteWatch watch_;
    Request request_;
};

}  // namespace kestrav
