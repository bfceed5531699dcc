#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "command/AnswerSink.h"

namespace kestrav {

/// An answer sink that keeps what it is told. May be told on any thread.
class RecordedAnswers final : public AnswerSink {
  public:
    void asked(std::string_view command, std::span<const std::string> arguments) override {
        std::string line(command);
        for (const std::string& argument : arguments)
            line += " " + argument;
        keep("asked " + line);
    }
    void answered(std::string_view bytes) override { keep("answered " + std::string(bytes)); }
    void unanswered(const Unanswered& unanswered) override {
        const std::lock_guard lock(mutex_);
        unanswered_.push_back(unanswered);
        events_.emplace_back("unanswered");
    }

    /// One line a call, in order: "asked dd x", "answered " and the bytes, "unanswered".
    std::vector<std::string> events() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    std::vector<Unanswered> unanswered() const {
        const std::lock_guard lock(mutex_);
        return unanswered_;
    }

  private:
    void keep(std::string event) {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
    std::vector<Unanswered> unanswered_;
};

}  // namespace kestrav
