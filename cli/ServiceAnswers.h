#pragma once

#include <variant>
#include <vector>

#include "command/Answer.h"
#include "command/AnswerSink.h"
#include "command/AnswerTo.h"

namespace kestrav {

/// What the command service answered, exchange by exchange: the engine that makes the exchanges learns nothing of it.
/// For one thread.
class ServiceAnswers final : public AnswerSink {
  public:
    /// An answer with its meaning.
    struct Given {
        Answer answer;
        bool isLogged = false;  ///< it was text, which is what goes to the log
    };
    struct Exchange {
        AnswerTo question;
        std::variant<Given, Unanswered> end;
    };

    /// In the order in which they ended.
    const std::vector<Exchange>& exchanges() const { return exchanges_; }

    /// Whether the last that was heard of the service is a failure. An exchange that ended in silence doesn't change
    /// what was heard before it.
    bool saidLastThatItFailed() const;

    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view bytes) override;
    void unanswered(const Unanswered& unanswered) override;

  private:
    AnswerTo question_;
    std::vector<Exchange> exchanges_;
};

}  // namespace kestrav
