#pragma once

#include "command/AnswerSink.h"

namespace kestrav {

/// Passes on what is answered to two others, one after the other.
class BothAnswerSinks final : public AnswerSink {
  public:
    /// Neither is owned; both outlive this object.
    BothAnswerSinks(AnswerSink& first, AnswerSink& second) : first_(first), second_(second) {}

    void asked(std::string_view command, std::span<const std::string> arguments) override {
        first_.asked(command, arguments);
        second_.asked(command, arguments);
    }
    void answered(std::string_view bytes) override {
        first_.answered(bytes);
        second_.answered(bytes);
    }
    void unanswered(const Unanswered& unanswered) override {
        first_.unanswered(unanswered);
        second_.unanswered(unanswered);
    }

  private:
    AnswerSink& first_;
    AnswerSink& second_;
};

}  // namespace kestrav
