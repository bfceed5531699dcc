#pragma once

#include <QPointer>
#include <string_view>

#include "command/AnswerSink.h"

namespace kestrav {

class StatusLine;

/// Shows on the window's status line what the command service answers, or why it gave no answer: the sentence that the
/// log has of it. Where the log has none, what stands there stays.
///
/// May be told on any thread, as an update runs on one of its own; the line is changed on the main thread, a moment
/// later. The line may go away before this object.
class StatusLineAnswers final : public AnswerSink {
  public:
    explicit StatusLineAnswers(StatusLine& line);

    void answered(std::string_view bytes) override;
    void unanswered(const Unanswered& unanswered) override;

  private:
    void show(std::string_view sentence) const;

    QPointer<StatusLine> line_;
};

}  // namespace kestrav
