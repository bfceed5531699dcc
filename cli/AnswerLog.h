#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "base/SystemLog.h"
#include "command/AnswerSink.h"
#include "outcome/ServiceAnswers.h"

namespace kestrav {

/// The log of another object without the blocks that the command service read: they are data, and whoever asked for
/// them gets them. Everything else goes there as soon as it is known what it is. For one thread.
class AnswerLog final : public SystemLog, public AnswerSink {
  public:
    /// Nothing is owned; all outlive this object. What is answered goes to `next`, and from there to `answers`, which
    /// tell what an entry is. `told`, where there is one, hears of each exchange when it has ended.
    AnswerLog(SystemLog& log, AnswerSink& next, const ServiceAnswers& answers,
              std::function<void(const ServiceAnswers::Exchange&)> told = {})
        : log_(log),
          next_(next),
          answers_(answers),
          told_(std::move(told)) {}
    ~AnswerLog() override { passOn(); }
    AnswerLog(const AnswerLog&) = delete;
    AnswerLog& operator=(const AnswerLog&) = delete;

    void write(std::string_view entry) override {
        passOn();
        held_ = std::string(entry);
    }

    void asked(std::string_view command, std::span<const std::string> arguments) override {
        passOn();
        next_.asked(command, arguments);
    }
    void answered(std::string_view bytes) override {
        next_.answered(bytes);
        const auto& given = std::get<ServiceAnswers::Given>(answers_.last()->end);
        if (given.answer.meaning == Answer::Meaning::blocks) held_.reset();
        passOn();
        if (told_) told_(*answers_.last());
    }
    void unanswered(const Unanswered& unanswered) override {
        next_.unanswered(unanswered);
        passOn();
        if (told_) told_(*answers_.last());
    }

  private:
    void passOn() {
        if (held_) log_.write(*held_);
        held_.reset();
    }

    SystemLog& log_;
    AnswerSink& next_;
    const ServiceAnswers& answers_;
    std::function<void(const ServiceAnswers::Exchange&)> told_;
    std::optional<std::string> held_;
};

}  // namespace kestrav
