#pragma once

#include <functional>
#include <initializer_list>
#include <vector>

#include "command/AnswerSink.h"

namespace kestrav {

/// Passes on what is answered to several others, one after the other.
class AnswerSinks final : public AnswerSink {
  public:
    /// None is owned; all outlive this object.
    AnswerSinks(std::initializer_list<std::reference_wrapper<AnswerSink>> sinks) : sinks_(sinks) {}

    void asked(std::string_view command, std::span<const std::string> arguments) override {
        for (AnswerSink& sink : sinks_)
            sink.asked(command, arguments);
    }
    void answered(std::string_view bytes) override {
        for (AnswerSink& sink : sinks_)
            sink.answered(bytes);
    }
    void unanswered(const Unanswered& unanswered) override {
        for (AnswerSink& sink : sinks_)
            sink.unanswered(unanswered);
    }

  private:
    std::vector<std::reference_wrapper<AnswerSink>> sinks_;
};

}  // namespace kestrav
