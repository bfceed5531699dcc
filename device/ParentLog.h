#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "device/LogSink.h"

namespace kestrav {

/// Hands lines on to whoever is the engine's parent at that moment. As long as there is none, lines are dropped.
class ParentLog final : public LogSink {
  public:
    /// Who takes the lines; null as long as there is nobody.
    const std::shared_ptr<LogSink>& parent() const { return parent_; }
    void setParent(std::shared_ptr<LogSink> value) { parent_ = std::move(value); }

    void log(std::string_view line) override {
        if (parent_) parent_->log(line);
    }

  private:
    std::shared_ptr<LogSink> parent_;
};

}  // namespace kestrav
