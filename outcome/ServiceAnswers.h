#pragma once

#include <string>
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
        std::string bytes;  ///< as it came: not always text, and not always the service's

        /// Whether it went to the log.
        bool isText() const;
    };
    struct Exchange {
        AnswerTo question;
        std::variant<Given, Unanswered> end;
    };

    /// In the order in which they ended.
    const std::vector<Exchange>& exchanges() const { return exchanges_; }

    /// The one that ended last, which is the write of an update; null before the first.
    const Exchange* last() const { return exchanges_.empty() ? nullptr : &exchanges_.back(); }

    /// As before the first.
    void forget() { exchanges_.clear(); }

    void asked(std::string_view command, std::span<const std::string> arguments) override;
    void answered(std::string_view bytes) override;
    void unanswered(const Unanswered& unanswered) override;

  private:
    AnswerTo question_;
    std::vector<Exchange> exchanges_;
};

}  // namespace kestrav
